#include <mdtools/application_registry.h>

#include <mdtools/strings.h>

namespace Tools {

namespace {

// Unlike tryParseInt, which takes the number that a text begins with, this wants the whole text to
// be one: blanks, a sign, digits, and nothing after them.
mdt::Nullable<int> parseWhole(const std::string& text)
{
    const bool endsInDigit = !text.empty() && text.back() >= '0' && text.back() <= '9';
    const std::size_t digits = text.find_last_not_of("0123456789") + 1;
    const std::size_t sign = digits > 0 && (text[digits - 1] == '-' || text[digits - 1] == '+');
    const bool hasOnlySpacesBefore = text.find_first_not_of(" \t\n\v\f\r") >= digits - sign;
    return endsInDigit && hasOnlySpacesBefore ? tryParseInt(text) : mdt::Nullable<int>();
}

// The type comes first: setting it clears the data.
RegistryValue emptyValue(RegistryValue::Type type)
{
    RegistryValue value;
    value.setType(type);
    return value;
}

}

Registrar::Registrar(const std::string& relPath, Registry::Hive hive)
    : m_relPath(relPath), m_hive(hive)
{}

mdt::Nullable<std::string> Registrar::readString(const std::string& name) const
{
    const RegistryValue value = findValue(name);
    if (value.type() != RegistryValue::String)
        return mdt::Nullable<std::string>();
    return value.getString();
}

mdt::Nullable<std::uint32_t> Registrar::readDWord(const std::string& name) const
{
    const RegistryValue value = findValue(name);
    if (value.type() != RegistryValue::DWord)
        return mdt::Nullable<std::uint32_t>();
    return value.getDWord();
}

// A word is taken as the int of the same bits, so that negative numbers come back.
mdt::Nullable<int> Registrar::readInt(const std::string& name, RegistryValue::Type type) const
{
    if (type == RegistryValue::String) {
        const mdt::Nullable<std::string> text = readString(name);
        return text ? parseWhole(text.getValue()) : mdt::Nullable<int>();
    }
    if (type == RegistryValue::DWord) {
        const mdt::Nullable<std::uint32_t> word = readDWord(name);
        return word ? mdt::Nullable<int>(static_cast<int>(word.getValue())) : mdt::Nullable<int>();
    }
    return mdt::Nullable<int>();
}

mdt::Nullable<bool> Registrar::readBool(const std::string& name, RegistryValue::Type type) const
{
    const mdt::Nullable<int> number = readInt(name, type);
    return number ? mdt::Nullable<bool>(number.getValue() != 0) : mdt::Nullable<bool>();
}

std::vector<int> Registrar::readInts(const std::string& name) const
{
    std::vector<int> numbers;
    const RegistryValue value = findValue(name);
    if (value.type() != RegistryValue::MultiString)
        return numbers;
    for (const std::string& text : value.getMultiString()) {
        const mdt::Nullable<int> number = tryParseInt(text);
        if (number)
            numbers.push_back(number.getValue());
    }
    return numbers;
}

mdt::Nullable<Rectangle<int>> Registrar::readIntRect(const std::string& name) const
{
    const std::vector<int> numbers = readInts(name);
    if (numbers.size() < 4)
        return mdt::Nullable<Rectangle<int>>();
    return Rectangle<int>{numbers[0], numbers[1], numbers[2], numbers[3]};
}

mdt::Nullable<Size<int>> Registrar::readIntSize(const std::string& name) const
{
    const std::vector<int> numbers = readInts(name);
    if (numbers.size() < 2)
        return mdt::Nullable<Size<int>>();
    return Size<int>{numbers[0], numbers[1]};
}

void Registrar::writeString(const std::string& name, const std::string& text) const
{
    write(emptyValue(RegistryValue::String).setData(text), name);
}

void Registrar::writeDWord(const std::string& name, std::uint32_t word) const
{
    write(emptyValue(RegistryValue::DWord).setData(word), name);
}

void Registrar::writeInt(const std::string& name, int value, RegistryValue::Type type) const
{
    if (type == RegistryValue::DWord)
        writeDWord(name, static_cast<std::uint32_t>(value));
    else if (type == RegistryValue::String)
        writeString(name, std::to_string(value));
}

void Registrar::writeBool(const std::string& name, bool value, RegistryValue::Type type) const
{
    writeInt(name, value ? 1 : 0, type);
}

void Registrar::writeInts(const std::string& name, const std::vector<int>& list) const
{
    std::vector<std::string> texts;
    texts.reserve(list.size());
    for (const int number : list)
        texts.push_back(std::to_string(number));
    write(emptyValue(RegistryValue::MultiString).setData(texts), name);
}

void Registrar::writeIntRect(const std::string& name, const Rectangle<int>& rectangle) const
{
    writeInts(name, {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom});
}

void Registrar::writeIntSize(const std::string& name, const Size<int>& size) const
{
    writeInts(name, {size.width, size.height});
}

std::string Registrar::getAbsPath() const
{
    return getMerodaRegistryPath(m_relPath);
}

RegistryValue Registrar::findValue(const std::string& name) const
{
    return Registry::find(m_hive, getAbsPath(), false)[name];
}

// Made if it is missing; add() opens it once more for writing.
RegistryKey Registrar::findWritableKey() const
{
    return Registry::find(m_hive, getAbsPath(), true);
}

void Registrar::write(RegistryValue value, const std::string& name) const
{
    findWritableKey().add(value.setName(name));
}

}
