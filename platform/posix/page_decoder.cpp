#include "platform/page_decoder.h"

#include "platform/posix/file_descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <iconv.h>
#include <string>

namespace Tools::Platform {

// The converters are modules, which are looked up in one file and loaded from others.
bool PageDecoder::canLook()
{
    constexpr int Needed = 4;
    std::array<FileDescriptor, Needed> descriptors;
    for (FileDescriptor& descriptor : descriptors) {
        descriptor = FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!descriptor.valid())
            return false;
    }
    return true;
}

PageDecoder::PageDecoder(unsigned page)
    : m_handle(::iconv_open("UTF-16LE", ("CP" + std::to_string(page)).c_str()))
{}

PageDecoder::~PageDecoder()
{
    if (isKnown())
        ::iconv_close(m_handle);
}

bool PageDecoder::isKnown() const
{
    return m_handle != reinterpret_cast<iconv_t>(-1);
}

// Pages with combining characters hold a letter back until the converter is flushed.
PageDecoder::Result PageDecoder::decode(std::string_view character, char16_t& unit)
{
    std::array<char, 2> in{};
    std::copy(character.begin(), character.end(), in.begin());
    std::array<unsigned char, 8> out{};
    char* from = in.data();
    char* to = reinterpret_cast<char*>(out.data());
    std::size_t inLeft = character.size();
    std::size_t outLeft = out.size();
    ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
    const std::size_t status = ::iconv(m_handle, &from, &inLeft, &to, &outLeft);
    if (status == static_cast<std::size_t>(-1))
        return errno == EINVAL ? Result::Incomplete : Result::Unknown;
    ::iconv(m_handle, nullptr, nullptr, &to, &outLeft);
    if (outLeft != out.size() - 2)
        return Result::Unknown;
    unit = static_cast<char16_t>(out[0] | out[1] << 8);
    return Result::Unit;
}

}
