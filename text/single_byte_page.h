#pragma once

#include "text/byte_block.h"
#include "text/process_object.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace Tools {

// The process's code page as tables, filled once by the system's own conversion, so that it answers
// as the system does. Made on first use (ProcessObject): any thread may use it at any time.
class SingleBytePage {
public:
    // Null if the process's code page is not a single-byte one.
    static const SingleBytePage* get()
    {
        const Answer* const answer = ms_answer.find();
        return (answer != nullptr ? *answer : provide()).get();
    }

    std::wstring toWide(std::string_view text) const;
    std::string toNarrow(std::wstring_view text) const;

private:
    using Answer = std::unique_ptr<const SingleBytePage>;

    SingleBytePage() = default;
    static const Answer& provide();
    static std::unique_ptr<SingleBytePage> make();
    bool fillNarrow(unsigned first, unsigned last);

    void widen(std::string_view text, wchar_t* wide) const;
    std::size_t narrow(std::wstring_view text, char* narrow) const;
    bool narrowUnit(wchar_t unit, char& byte) const;

    static ProcessObject<Answer> ms_answer;

    std::array<wchar_t, 256> m_wide{};
    std::array<char, 0x10000> m_narrow{};
    // The bytes from 0xA0 on are the first 256 units of Unicode, as those of ASCII are in any page.
    bool m_isLatin = false;
};

}
