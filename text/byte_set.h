#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace Tools {

// A set of bytes as a bitmap: quickly filled and asked.
class ByteSet {
public:
    constexpr ByteSet() = default;
    constexpr explicit ByteSet(std::string_view bytes)
    {
        for (const char c : bytes)
            add(c);
    }

    constexpr void add(char c)
    {
        const auto byte = static_cast<unsigned char>(c);
        m_bits[byte >> 6] |= std::uint64_t{1} << (byte & 63);
    }

    constexpr bool contains(char c) const
    {
        const auto byte = static_cast<unsigned char>(c);
        return (m_bits[byte >> 6] >> (byte & 63) & 1) != 0;
    }

private:
    std::array<std::uint64_t, 4> m_bits{};
};

}
