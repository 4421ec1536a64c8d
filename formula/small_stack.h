#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace Tools {

// A stack of plain values with a small buffer in place: it takes memory from the heap only when it
// grows beyond `Inline`, and doubles then.
template <class T, std::size_t Inline>
class SmallStack {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    SmallStack() = default;
    SmallStack(const SmallStack&) = delete;
    SmallStack& operator=(const SmallStack&) = delete;

    bool isEmpty() const { return m_size == 0; }
    std::size_t size() const { return m_size; }
    void clear() { m_size = 0; }

    // The element `depth` below the top, which is 0.
    T& fromTop(std::size_t depth) { return m_data[m_size - 1 - depth]; }

    void push(const T& value)
    {
        if (m_size == m_capacity)
            grow();
        m_data[m_size++] = value;
    }

    T pop() { return m_data[--m_size]; }

private:
    void grow()
    {
        const std::size_t capacity = 2 * m_capacity + 1;
        auto larger = std::make_unique_for_overwrite<T[]>(capacity);
        std::copy_n(m_data, m_size, larger.get());
        m_heap = std::move(larger);
        m_data = m_heap.get();
        m_capacity = capacity;
    }

    T m_inline[Inline];
    T* m_data = m_inline;
    std::size_t m_size = 0;
    std::size_t m_capacity = Inline;
    std::unique_ptr<T[]> m_heap;
};

}
