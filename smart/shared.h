#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace Tools::Smart {

// Base of what several owners share: Shared<T> counts them. Records of different threads share
// names and indexes, so the count is atomic.
class SharedObject {
public:
    SharedObject() = default;
    // A copy is an object of its own.
    SharedObject(const SharedObject&) {}
    SharedObject& operator=(const SharedObject&) = delete;

    void addOwner() const { m_owners.fetch_add(1, std::memory_order_relaxed); }
    // True for the last owner, who deletes the object.
    bool removeOwner() const { return m_owners.fetch_sub(1, std::memory_order_acq_rel) == 1; }
    // True if the caller is the only owner, who may change the object then.
    bool hasOneOwner() const { return m_owners.load(std::memory_order_acquire) == 1; }

protected:
    ~SharedObject() = default;

private:
    mutable std::atomic<std::size_t> m_owners{0};
};

template <class T>
class Shared {
public:
    Shared() = default;
    explicit Shared(T* object) : m_object(object)
    {
        if (m_object != nullptr)
            m_object->addOwner();
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
        if (m_object != nullptr && m_object->removeOwner())
            T::destroy(m_object);
    }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

}
