#pragma once

#include "platform/codepage.h"
#include "platform/lifetime.h"

#include <atomic>
#include <memory>

namespace Tools {

// A table of the process's code page that is made on first use and never changed, so that any
// thread may use it at any time, until the very end of the process. It is freed when the library
// leaves a process that goes on.
//
// While the page itself is not known (Platform::isCodePageKnown), what is made of its stand-in is
// handed out and nothing is remembered. A static object without a destructor.
template <class T>
class ProcessObject {
public:
    constexpr ProcessObject() = default;
    ProcessObject(const ProcessObject&) = delete;
    ProcessObject& operator=(const ProcessObject&) = delete;

    // Null if it has to be provided: a test in the caller's own code, and a call the first time.
    const T* find() const { return m_object.load(std::memory_order_acquire); }

    // `make` returns a unique pointer; `atEnd` calls free().
    template <class Make>
    const T& provide(Make make, Platform::EndHandler atEnd)
    {
        std::atomic<const T*>& target = Platform::isCodePageKnown() ? m_object : m_standIn;
        if (const T* const object = target.load(std::memory_order_acquire))
            return *object;
        std::unique_ptr<const T> made = make();
        const T* before = nullptr;
        if (!target.compare_exchange_strong(before, made.get()))
            return *before;
        const T& result = *made.release();
        Platform::onLibraryEnd(atEnd);
        return result;
    }

    void free(Platform::LibraryEnd end)
    {
        if (end != Platform::LibraryEnd::Unloading)
            return;
        delete m_object.exchange(nullptr);
        delete m_standIn.exchange(nullptr);
    }

private:
    std::atomic<const T*> m_object{nullptr};
    std::atomic<const T*> m_standIn{nullptr};
};

}
