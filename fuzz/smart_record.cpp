// Records must not depend on how the input reaches the reader, and what was written must read back
// and be written as the same again.

#include <mdtools/smart_record.h>

#include <cstdint>
#include <cstdlib>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

namespace {

using namespace Tools::Smart;

// Shows one character at once.
class Source : public std::streambuf {
public:
    Source(const char* text, std::size_t size) : m_text(text, size)
    {
        setg(m_text.data(), m_text.data(), m_text.data());
    }

protected:
    int_type underflow() override
    {
        if (gptr() == m_text.data() + m_text.size())
            return traits_type::eof();
        setg(eback(), gptr(), gptr() + 1);
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_text;
};

std::string read(std::istream& stream, Record& record)
{
    try {
        record.readFrom(stream);
        return "";
    } catch (const WrongToken& e) {
        return e.what();
    }
}

std::string written(const Record& record)
{
    std::ostringstream stream;
    stream << std::scientific;
    stream.precision(17);
    record.writeTo(stream, 0, "");
    return stream.str();
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream all(text);
    Source source(text.data(), text.size());
    std::istream little(&source);
    Record record;
    Record other;
    const std::string error = read(all, record);
    const std::string result = written(record);
    if (error != read(little, other) || result != written(other) ||
        all.rdstate() != little.rdstate() || written(Record(record)) != result)
        std::abort();
    // Texts may hold what does not read back.
    if (text.find('"') != std::string::npos || result.find("inf") != std::string::npos)
        return 0;
    std::istringstream again(result);
    Record back;
    if (!read(again, back).empty() || written(back) != result)
        std::abort();
    for (const auto& [name, type] : Record(back))
        back.erase(name);
    if (back.begin() != back.end())
        std::abort();
    return 0;
}
