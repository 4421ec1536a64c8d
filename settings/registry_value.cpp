#include <mdtools/registry.h>

#include "platform/registry_store.h"
#include "settings/registry_path.h"
#include "text/digits.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace Tools {

namespace {

// The library's number of a type, from the system's; types that the library does not have are None.
RegistryValue::Type typeOf(std::uint32_t kind)
{
    switch (kind) {
    case Platform::ValueKind::Text:
        return RegistryValue::String;
    case Platform::ValueKind::MultiText:
        return RegistryValue::MultiString;
    case Platform::ValueKind::ExpandText:
        return RegistryValue::ExpandString;
    case Platform::ValueKind::Binary:
        return RegistryValue::Binary;
    case Platform::ValueKind::Word:
        return RegistryValue::DWord;
    default:
        return RegistryValue::None;
    }
}

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The number at the front of a text, 0 if there is none. Too large a one becomes the largest, and a
// minus sign wraps around.
std::uint32_t leadingNumber(const char* text)
{
    while (isSpace(*text))
        ++text;
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+')
        ++text;
    constexpr std::uint64_t Maximum = std::numeric_limits<std::uint32_t>::max();
    std::uint64_t number = 0;
    for (; isDigit(*text); ++text) {
        number = number * 10 + static_cast<std::uint64_t>(*text - '0');
        if (number > Maximum)
            return static_cast<std::uint32_t>(Maximum);
    }
    return static_cast<std::uint32_t>(isNegative ? 0 - number : number);
}

// The data of a MultiString comes from anywhere: a missing end counts as the end.
std::string_view firstText(std::string_view list)
{
    return list.substr(0, list.find('\0'));
}

std::string_view withoutFirst(std::string_view list)
{
    const std::size_t size = firstText(list).size();
    return list.substr(std::min(size + 1, list.size()));
}

template <class Text>
void appendText(std::string& list, const Text& text)
{
    list += text;
    list += '\0';
}

}

// Makes stored data the value's own. What is stored comes from anywhere: a text ends at its first
// NUL or at its end, and a word may have fewer than four bytes.
class RegistryValue::Reader final : public Platform::ValueReceiver {
public:
    explicit Reader(RegistryValue& value) : m_value(value) {}

    void receive(std::uint32_t kind, std::string_view data) override
    {
        const Type type = typeOf(kind);
        m_value.m_type = type;
        if (type == String || type == ExpandString)
            m_value.m_data = firstText(data);
        else if (type == MultiString || type == Binary)
            m_value.m_data = data;
        else if (type == DWord && data.size() <= sizeof m_value.m_word)
            std::memcpy(&m_value.m_word, data.data(), data.size());
    }

private:
    RegistryValue& m_value;
};

RegistryValue::RegistryValue(KeyHandle key, const std::string& name) : m_name(name)
{
    Reader reader(*this);
    if (key != nullptr && isValueName(name))
        Platform::readValue(key, name, reader);
}

RegistryValue::~RegistryValue() = default;

std::size_t RegistryValue::size() const
{
    if (holdsText())
        return m_data.size() + 1;
    return m_type == DWord ? sizeof m_word : m_data.size();
}

RegistryValue& RegistryValue::setName(const std::string& name)
{
    m_name = name;
    return *this;
}

RegistryValue& RegistryValue::setType(Type type)
{
    m_type = type;
    m_data.clear();
    m_word = 0;
    return *this;
}

// m_data is what would be stored: the text (its NUL is the string's own), the packed list, or the
// bytes. m_word is kept beside it, so that a word set without a type is still there.
RegistryValue& RegistryValue::setData(const std::string& text)
{
    if (m_type == DWord)
        m_word = leadingNumber(text.c_str());
    else if (m_type != None)
        m_data = text;
    if (m_type == MultiString && !text.empty())
        m_data.append(2, '\0');
    return *this;
}

RegistryValue& RegistryValue::setData(const std::vector<std::string>& list)
{
    std::string packed;
    for (const std::string& text : list)
        appendText(packed, text);
    packed += '\0';
    return setData(packed.data(), packed.size());
}

RegistryValue& RegistryValue::setData(std::initializer_list<std::string> list)
{
    return setData(std::vector<std::string>(list));
}

RegistryValue& RegistryValue::setData(std::uint32_t word)
{
    m_word = word;
    return *this;
}

RegistryValue& RegistryValue::setData(int word)
{
    return setData(static_cast<std::uint32_t>(word));
}

RegistryValue& RegistryValue::setData(unsigned long word)
{
    return setData(static_cast<std::uint32_t>(word));
}

RegistryValue& RegistryValue::setData(const char* characters, std::size_t size)
{
    if (holdsText())
        m_data = characters != nullptr ? characters : "";
    else if (m_type == MultiString || m_type == Binary)
        m_data = characters != nullptr ? std::string(characters, size) : std::string();
    return *this;
}

RegistryValue& RegistryValue::setData(const unsigned char* bytes, std::size_t size)
{
    const std::string_view data(reinterpret_cast<const char*>(bytes), bytes != nullptr ? size : 0);
    if (m_type == DWord)
        std::copy_n(data.data(), std::min(data.size(), sizeof m_word),
                    reinterpret_cast<char*>(&m_word));
    else if (m_type != None)
        m_data = std::string(holdsText() ? firstText(data) : data);
    return *this;
}

RegistryValue& RegistryValue::setData(const char* const* texts)
{
    if (texts == nullptr)
        return *this;
    const char* first = *texts != nullptr ? *texts : "";
    if (holdsText()) {
        m_data = first;
    } else if (m_type == DWord) {
        m_word = leadingNumber(first);
    } else if (m_type == MultiString) {
        std::string packed;
        for (; *texts != nullptr; ++texts)
            appendText(packed, *texts);
        packed += '\0';
        m_data = packed;
    }
    return *this;
}

std::string RegistryValue::getString() const
{
    return getMultiStringAt(0);
}

std::vector<std::string> RegistryValue::getMultiString() const
{
    if (holdsText())
        return {m_data};
    std::vector<std::string> texts;
    if (m_type == MultiString)
        for (std::string_view list = m_data; !firstText(list).empty(); list = withoutFirst(list))
            texts.emplace_back(firstText(list));
    return texts;
}

// The list is walked from its front: it is packed, and an empty text ends it.
std::string RegistryValue::getMultiStringAt(std::size_t index) const
{
    if (holdsText())
        return m_data;
    if (m_type != MultiString)
        return std::string();
    std::string_view list = m_data;
    for (; index > 0 && !firstText(list).empty(); --index)
        list = withoutFirst(list);
    return std::string(firstText(list));
}

unsigned char* RegistryValue::getBytes()
{
    if (m_type == None)
        return nullptr;
    return reinterpret_cast<unsigned char*>(m_type == DWord ? reinterpret_cast<char*>(&m_word)
                                                            : m_data.data());
}

const unsigned char* RegistryValue::getBytes() const
{
    return const_cast<RegistryValue*>(this)->getBytes();
}

char* RegistryValue::getChars()
{
    return reinterpret_cast<char*>(getBytes());
}

const char* RegistryValue::getChars() const
{
    return reinterpret_cast<const char*>(getBytes());
}

unsigned char* RegistryValue::getBinary(unsigned char* destination, std::size_t capacity) const
{
    const std::size_t count = std::min(capacity, size());
    if (destination != nullptr && count > 0)
        std::memcpy(destination, getBytes(), count);
    return destination;
}

}
