#pragma once

#include <utility>

namespace mdt {

// A value or nothing, the result of reads and parses that may find none. Unlike std::optional the
// value is always there to be read: it is zero-initialised while the object is empty. A plain
// value: one thread at a time, unless all of them only read.
template <class T>
class Nullable {
public:
    Nullable() = default;
    Nullable(T value) : m_hasValue(true), m_value(std::move(value)) {}

    bool hasValue() const { return m_hasValue; }
    explicit operator bool() const { return m_hasValue; }

    // The zero-initialised value of T when empty.
    const T& getValue() const { return m_value; }
    T getValueOr(T other) const { return m_hasValue ? m_value : std::move(other); }

    // Two empty objects are equal; an empty one never equals one with a value.
    friend bool operator==(const Nullable& a, const Nullable& b)
    {
        return a.m_hasValue == b.m_hasValue && (!a.m_hasValue || a.m_value == b.m_value);
    }

private:
    bool m_hasValue = false;
    T m_value{};
};

}
