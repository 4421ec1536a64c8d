#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace Tools::Smart {

// Intrusive reference counting: the base of what several owners share; Shared<T> counts them.
// Records of different threads share names and indexes, so the count is atomic. Adding an owner
// needs no order, because the one who adds has one already. Removing releases what the owner wrote
// and acquires what the others did, so that whoever deletes the object sees all of it.
class SharedObject {
public:
    SharedObject() = default;
    // A copy is an object of its own.
    SharedObject(const SharedObject&) {}
    SharedObject& operator=(const SharedObject&) = delete;

    void addOwners(std::size_t count) const
    {
        m_owners.fetch_add(count, std::memory_order_relaxed);
    }
    // True if they were the last owners; the object is to be deleted then.
    bool removeOwners(std::size_t count) const
    {
        return m_owners.fetch_sub(count, std::memory_order_acq_rel) == count;
    }
    // True if the caller is the only owner, who may change the object then.
    bool hasOneOwner() const { return m_owners.load(std::memory_order_acquire) == 1; }

protected:
    ~SharedObject() = default;

private:
    mutable std::atomic<std::size_t> m_owners{0};
};

// One owner of an object, or none.
template <class T>
class Shared {
public:
    Shared() = default;
    explicit Shared(T* object) : m_object(object)
    {
        if (m_object != nullptr)
            m_object->addOwners(1);
    }
    Shared(const Shared& other) : Shared(other.m_object) {}
    Shared(Shared&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Shared& operator=(Shared other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Shared()
    {
        if (m_object != nullptr && m_object->removeOwners(1))
            T::destroy(m_object);
    }

    // For an owner that was counted already, or will be uncounted elsewhere.
    static Shared counted(T* object)
    {
        Shared shared;
        shared.m_object = object;
        return shared;
    }
    T* release() { return std::exchange(m_object, nullptr); }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

// Batched reference counting, the adding half: owners are added by the hundred and handed out one
// by one, because counting in memory that other threads may see is slow. The count includes those
// in stock, so it never falls short.
template <class T>
class OwnerStock {
public:
    OwnerStock() = default;
    explicit OwnerStock(Shared<T> object) : m_object(std::move(object)) {}
    OwnerStock(OwnerStock&& other) noexcept
        : m_object(std::move(other.m_object)), m_count(std::exchange(other.m_count, 0))
    {}
    OwnerStock& operator=(OwnerStock&& other) noexcept
    {
        std::swap(m_object, other.m_object);
        std::swap(m_count, other.m_count);
        return *this;
    }
    ~OwnerStock()
    {
        // The object stays: m_object is an owner, too.
        if (m_count > 0)
            m_object->removeOwners(m_count);
    }

    explicit operator bool() const { return static_cast<bool>(m_object); }

    Shared<T> take()
    {
        if (m_count == 0) {
            m_object->addOwners(Supply);
            m_count = Supply;
        }
        --m_count;
        return Shared<T>::counted(m_object.get());
    }

private:
    static constexpr std::size_t Supply = 256;

    Shared<T> m_object;
    std::size_t m_count = 0;
};

// Batched reference counting, the removing half: owners of the same object go together. The object
// may be gone after flush() only.
template <class T>
class OwnerReturn {
public:
    OwnerReturn() = default;
    OwnerReturn(const OwnerReturn&) = delete;
    OwnerReturn& operator=(const OwnerReturn&) = delete;
    ~OwnerReturn() { flush(); }

    void add(T* object)
    {
        if (object != m_object) {
            flush();
            m_object = object;
        }
        ++m_count;
    }
    void flush()
    {
        if (m_count > 0 && m_object->removeOwners(m_count))
            T::destroy(m_object);
        m_count = 0;
    }

private:
    T* m_object = nullptr;
    std::size_t m_count = 0;
};

}
