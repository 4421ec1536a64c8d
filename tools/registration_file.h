#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The text files in which registry editors export and import keys, in their two forms: version 5.00
// in UTF-16, and REGEDIT4 in the code page. All texts here are in the code page.
namespace Tools::Registration {

enum class Format { Version5, Regedit4 };

// A key by the number of its hive and the names from the top down.
struct KeyPath {
    int hive = -1;
    std::vector<std::string> names;

    // "HKEY_CURRENT_USER\Software\...", with the root's name in its long form.
    std::string text() const;
};

// Reads a path that begins with the long or the short name of one of the three roots, in any case
// ("HKCU\Software"), with any of the separators. False if it names no key.
bool readKeyPath(std::string_view text, std::string_view separators, KeyPath& path);

// What a file asks for.
struct Change {
    enum class Kind { CreateKey, RemoveKey, SetValue, RemoveValue };

    Kind kind = Kind::CreateKey;
    std::size_t line = 0;
    // The index of the key in Content::keys.
    std::size_t key = 0;
    std::string name;
    // The stored type's number, and the data as it is stored.
    std::uint32_t type = 0;
    std::string data;
};

struct Content {
    std::vector<KeyPath> keys;
    // In the order of the file.
    std::vector<Change> changes;
    // Values of types that the library does not know, of which nothing else is kept.
    std::vector<Change> unknown;
};

// What is wrong with a file, and in which line.
class Fault : public std::runtime_error {
public:
    Fault(std::size_t line, const std::string& text)
        : std::runtime_error("line " + std::to_string(line) + ": " + text), m_line(line)
    {}

    std::size_t line() const { return m_line; }

private:
    std::size_t m_line;
};

// Reads a whole file: UTF-16 or UTF-8 with its mark, else UTF-8 where it is that and the head says
// version 5.00, else the code page. Throws a Fault.
Content parse(const std::string& bytes);

// A value as it is written in a file of the REGEDIT4 form, in one line without its end.
std::string describeValue(const std::string& name, std::uint32_t type, const std::string& data);

// Composes a file.
class Writer {
public:
    explicit Writer(Format format);

    // Both are false, and leave the file as it is, for what a file cannot hold: line ends in a
    // name, text that gets lost in UTF-16, a path too long to be read back, a value of a type that
    // the library does not know.
    bool addKey(const KeyPath& path);
    bool addValue(const std::string& name, std::uint32_t type, const std::string& data);

    // The file's bytes.
    std::string take();

private:
    Format m_format;
    std::wstring m_text;
};

}
