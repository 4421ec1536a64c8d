#pragma once

#include "formula/small_stack.h"

#include <cstddef>

namespace Tools {

// Lazy flips: turns round signs in the rest of a formula, as each "-" demands, when they are read
// and not for each "-" anew. A flip that starts at a position
// - turns "+" into "-" and "-" into "+", but not within parentheses that open after its start;
// - ends at the ")" of the parenthesis that it starts in;
// - leaps from an "e" to the next digit, so that exponents keep their signs, whatever is
//   between, parentheses included; without another digit it ends.
//
// All flips go along together. They differ only in the parenthesis that they started in, and two of
// the same parenthesis undo each other, so that a parity bit for each open parenthesis is all that
// has to be kept. Those on a leap wait aside for the digit, while others may start on what is leapt
// over.
class SignFlips {
public:
    bool isActive() const { return m_isActive; }

    // From `position` on, up to which everything is settled.
    void start(std::size_t position);

    // All flips end.
    void stop();

    // Turns round the signs of `text` before `end`, after which flips may start there.
    void settle(char* text, std::size_t end);

private:
    // For each open parenthesis, and for the outermost level of all: is the number of flips that
    // started there odd?
    using Parities = SmallStack<bool, 64>;

    Parities& awake() { return m_parities[m_awake]; }
    Parities& leaping() { return m_parities[1 - m_awake]; }
    void step(char& character);
    std::size_t joinAll();

    Parities m_parities[2];
    std::size_t m_awake = 0;
    std::size_t m_position = 0;
    bool m_isActive = false;
};

}
