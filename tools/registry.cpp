#include "tools/registration_file.h"

#include "platform/console.h"
#include "platform/filesystem.h"
#include "platform/open_file.h"
#include "tools/registration_import.h"
#include "tools/stored_keys.h"

#include <mdtools/registry.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// mdtools-registry: shows and changes settings, and moves them to and from registration files.

namespace {

using namespace Tools;
using namespace Tools::Registration;

constexpr const char* Usage =
    "usage: mdtools-registry list KEY\n"
    "       mdtools-registry get KEY NAME\n"
    "       mdtools-registry set KEY NAME string|expand TEXT\n"
    "       mdtools-registry set KEY NAME multi [TEXT ...]\n"
    "       mdtools-registry set KEY NAME binary HEX\n"
    "       mdtools-registry set KEY NAME dword NUMBER\n"
    "       mdtools-registry delete KEY [NAME]\n"
    "       mdtools-registry export KEY FILE [--regedit4]\n"
    "       mdtools-registry import FILE\n"
    "KEY begins with HKLM, HKCU or HKCR (or their long names); \"/\" and \"\\\" separate. An "
    "empty\n"
    "NAME is the key's default value. Numbers are decimal, or hexadecimal after 0x.\n"
    "  list    subkeys and values, as registration files write them\n"
    "  get     the plain data: texts one a line, bytes and numbers as set takes them\n"
    "  delete  the value, or the key with all below it\n"
    "  export  the key with all below it; version 5.00 in UTF-16, or REGEDIT4\n"
    "  import  all of the file, or nothing if something is wrong with it or refused\n"
    "Values of other types are reported, but neither exported nor imported.\n";

// Why a command did not do its work; ends it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class WrongUsage : public std::exception {};

void report(const std::string& text)
{
    std::fputs(("mdtools-registry: " + text + "\n").c_str(), stderr);
}

void print(const std::string& text)
{
    if (!Platform::writeStandardOutput(text.data(), text.size()))
        throw Failure("cannot write the output");
}

KeyPath readPath(const std::string& text)
{
    KeyPath path;
    if (!readKeyPath(text, "/\\", path))
        throw Failure("no key can have the path \"" + text + "\"");
    return path;
}

RegistryKey openExisting(const KeyPath& path)
{
    RegistryKey key = openKey(path, false);
    if (!key.valid())
        throw Failure("there is no key " + path.text());
    return key;
}

void list(const KeyPath& path)
{
    const RegistryKey key = openExisting(path);
    std::string text;
    for (const std::string& name : subkeyNames(key))
        text += "[" + name + "]\n";
    visitValues(key, [&text](const std::string& name, const RawValue& value) {
        text += describeValue(name, value.kind, value.data) + "\n";
    });
    print(text);
}

std::string toHex(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        constexpr const char* Digits = "0123456789abcdef";
        const auto number = static_cast<unsigned char>(byte);
        text += Digits[number >> 4];
        text += Digits[number & 0xF];
    }
    return text;
}

// What `get` prints, and `set` takes.
std::string plainText(const RegistryValue& value)
{
    switch (value.type()) {
    case RegistryValue::DWord:
        return std::to_string(value.getDWord()) + "\n";
    case RegistryValue::Binary:
        return toHex(std::string(value.getChars(), value.size())) + "\n";
    default: {
        std::string lines;
        for (const std::string& text : value.getMultiString())
            lines += text + "\n";
        return lines;
    }
    }
}

void get(const KeyPath& path, const std::string& name)
{
    const RegistryKey key = openExisting(path);
    const RegistryValue value = key[name];
    RawValue stored;
    if (!value.valid() && Platform::readValue(key.handle(), name, stored))
        throw Failure("the value is of the unknown type " + std::to_string(stored.kind));
    if (!value.valid())
        throw Failure("there is no value \"" + name + "\" in " + path.text());
    print(plainText(value));
}

template <class Number>
Number readNumber(std::string_view text, int base)
{
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    if (text.empty() || result.ec != std::errc() || result.ptr != end)
        throw Failure("\"" + std::string(text) + "\" is no such number");
    return number;
}

std::uint32_t readWord(std::string_view text)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    return readNumber<std::uint32_t>(isHex ? text.substr(2) : text, isHex ? 16 : 10);
}

std::string readHex(std::string_view text)
{
    if (text.size() % 2 != 0)
        throw Failure("a digit is missing");
    std::string bytes;
    for (; !text.empty(); text.remove_prefix(2))
        bytes += static_cast<char>(readNumber<unsigned char>(text.substr(0, 2), 16));
    return bytes;
}

RegistryValue makeValue(const std::string& name, const std::string& type,
                        const std::vector<std::string>& data)
{
    RegistryValue value;
    value.setName(name);
    if (type == "multi")
        return value.setType(RegistryValue::MultiString).setData(data);
    if (data.size() != 1)
        throw WrongUsage();
    if (type == "string")
        return value.setType(RegistryValue::String).setData(data[0]);
    if (type == "expand")
        return value.setType(RegistryValue::ExpandString).setData(data[0]);
    if (type == "binary")
        return value.setType(RegistryValue::Binary).setData(readHex(data[0]));
    if (type == "dword")
        return value.setType(RegistryValue::DWord).setData(readWord(data[0]));
    throw WrongUsage();
}

void set(const KeyPath& path, const RegistryValue& value)
{
    RegistryKey key = openKey(path, true);
    if (!key.valid())
        throw Failure("cannot create " + path.text());
    // A write that fails says nothing; reading it back does.
    key.add(value);
    const RegistryValue stored = key[value.name()];
    if (stored.type() != value.type() || plainText(stored) != plainText(value))
        throw Failure("cannot write to " + path.text());
}

void remove(const KeyPath& path)
{
    openExisting(path);
    if (!removeKey(path))
        throw Failure("cannot delete " + path.text());
}

void remove(const KeyPath& path, const std::string& name)
{
    if (!Platform::removeValue(openExisting(path).handle(), name))
        throw Failure("cannot delete \"" + name + "\" from " + path.text());
}

// False if a file cannot hold the key, nor then what is below it.
bool exportKey(Writer& writer, const KeyPath& path, const RegistryKey& key)
{
    if (!writer.addKey(path)) {
        report(path.text() +
               " and what is below it is not exported: its name does not fit into a file");
        return false;
    }
    visitValues(key, [&](const std::string& name, const RawValue& value) {
        if (!writer.addValue(name, value.kind, value.data))
            report("\"" + name + "\" in " + path.text() + " is not exported: type " +
                   std::to_string(value.kind));
    });
    return true;
}

std::string exportTree(const KeyPath& top, Format format)
{
    openExisting(top);
    Writer writer(format);
    visitTree(top, [&writer](const KeyPath& path, const RegistryKey& key) {
        if (key.valid())
            return exportKey(writer, path, key);
        report(path.text() + " is not exported: it cannot be read");
        return false;
    });
    return writer.take();
}

// The new file is written aside and takes the old one's name when it is complete, so that a full
// disk leaves the old one as it was, and so does a program that holds it. What is no file, a pipe
// or a device, is written as it comes.
void exportTo(const std::string& file, const KeyPath& path, Format format)
{
    const std::string bytes = exportTree(path, format);
    const bool isFile = Platform::entryType(file) == Platform::EntryType::None ||
                        (Platform::entryType(file) == Platform::EntryType::File &&
                         (Platform::InputFile(file).isOpen() || Platform::isLocked(file)));
    const std::string aside = isFile ? file + ".new" : file;
    std::ofstream stream(aside, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (stream && (!isFile || Platform::replaceFile(aside, file) == 0))
        return;
    if (isFile)
        Platform::removeFile(aside);
    throw Failure("cannot write " + file);
}

void importFrom(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad())
        throw Failure("cannot read " + file);
    try {
        const Content content = parse(bytes);
        for (const Change& change : content.unknown)
            report(file + ", line " + std::to_string(change.line) + ": \"" + change.name +
                   "\" is not imported: type " + std::to_string(change.type));
        if (!importContent(content))
            throw Failure(file + ": the store cannot be written; nothing was changed");
    } catch (const Fault& fault) {
        throw Failure(file + ", " + fault.what() + "; nothing was changed");
    }
}

void run(const std::vector<std::string>& words)
{
    const std::size_t count = words.size();
    const std::string command = count > 1 ? words[0] : std::string();
    if (command == "list" && count == 2)
        list(readPath(words[1]));
    else if (command == "get" && count == 3)
        get(readPath(words[1]), words[2]);
    else if (command == "set" && count >= 4)
        set(readPath(words[1]), makeValue(words[2], words[3], {words.begin() + 4, words.end()}));
    else if (command == "delete" && count == 2)
        remove(readPath(words[1]));
    else if (command == "delete" && count == 3)
        remove(readPath(words[1]), words[2]);
    else if (command == "export" && count == 3)
        exportTo(words[2], readPath(words[1]), Format::Version5);
    else if (command == "export" && count == 4 && words[3] == "--regedit4")
        exportTo(words[2], readPath(words[1]), Format::Regedit4);
    else if (command == "import" && count == 2)
        importFrom(words[1]);
    else
        throw WrongUsage();
}

}

int main(int count, char** arguments)
{
    if (count == 2 && std::string_view(arguments[1]) == "--help") {
        std::fputs(Usage, stdout);
        return 0;
    }
    try {
        run({arguments + 1, arguments + count});
        return 0;
    } catch (const WrongUsage&) {
        std::fputs(Usage, stderr);
        return 2;
    } catch (const std::exception& error) {
        report(error.what());
        return 1;
    }
}
