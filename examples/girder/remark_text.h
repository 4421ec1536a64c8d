#pragma once

#include <string>

namespace Girder {

// Lengths that keep a remark on one line of a terminal or two.
constexpr std::size_t LongestWord = 40;
constexpr std::size_t LongestEntry = 120;

// The text, or its two ends with "..." between them if it is longer than `length`.
std::string abridged(const std::string& text, std::size_t length);

}
