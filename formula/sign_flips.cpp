#include "formula/sign_flips.h"

namespace Tools {

void SignFlips::start(std::size_t position)
{
    m_position = position;
    m_isActive = true;
    if (awake().isEmpty())
        awake().push(false);
    bool& isOdd = awake().fromTop(0);
    isOdd = !isOdd;
}

void SignFlips::stop()
{
    awake().clear();
    leaping().clear();
    m_isActive = false;
}

void SignFlips::settle(char* text, std::size_t end)
{
    for (; m_position < end && m_isActive; ++m_position)
        step(text[m_position]);
}

void SignFlips::step(char& character)
{
    if (character >= '0' && character <= '9' && !leaping().isEmpty())
        m_awake = joinAll();
    if (awake().isEmpty())
        return;
    switch (character) {
    case '(':
        awake().push(false);
        break;
    case ')':
        awake().pop();
        m_isActive = !awake().isEmpty() || !leaping().isEmpty();
        break;
    case 'e':
        m_awake = 1 - joinAll();
        break;
    case '+':
    case '-':
        if (awake().fromTop(0))
            character = character == '+' ? '-' : '+';
        break;
    default:
        break;
    }
}

// The flips on a leap and those that are awake see the same text from here on, so that their
// innermost levels are the same. Adding the shorter stack to the longer one costs no more than it
// took to build it. Returns which of the two has all flips.
std::size_t SignFlips::joinAll()
{
    const std::size_t all = m_parities[0].size() >= m_parities[1].size() ? 0 : 1;
    Parities& shorter = m_parities[1 - all];
    for (std::size_t level = 0; level < shorter.size(); ++level) {
        bool& isOdd = m_parities[all].fromTop(level);
        isOdd = isOdd != shorter.fromTop(level);
    }
    shorter.clear();
    return all;
}

}
