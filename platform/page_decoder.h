#pragma once

#include <string_view>

// Any code page that the system knows, character by character. Only where the system has no
// process-wide code page of its own: text/ makes the tables of one out of it (platform/codepage.h).
namespace Tools::Platform {

class PageDecoder {
public:
    // False while the process has no file descriptors left to look for a page with. Then none is to
    // be made: the system would remember for good that there are no pages.
    static bool canLook();

    explicit PageDecoder(unsigned page);
    PageDecoder(const PageDecoder&) = delete;
    PageDecoder& operator=(const PageDecoder&) = delete;
    ~PageDecoder();

    // False if the system does not know the page; nothing can be decoded then.
    bool isKnown() const;

    enum class Result { Unit, Unknown, Incomplete };

    // One character of one or two bytes as a UTF-16 unit. Unknown and Incomplete (another byte
    // would have to follow) leave `unit` unchanged.
    Result decode(std::string_view character, char16_t& unit);

private:
    void* m_handle;
};

}
