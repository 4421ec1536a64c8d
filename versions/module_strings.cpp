#include "versions/module_strings.h"

#include "platform/open_file.h"
#include "text/conversion.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace Tools {

namespace {

using Bytes = std::vector<unsigned char>;

// No version information is larger; a file that claims so is damaged.
constexpr std::uint64_t MaximalSize = 1 << 20;

// Little-endian numbers out of a block of bytes. Reading past the end gives 0.
std::uint32_t readNumber(const Bytes& bytes, std::size_t offset, unsigned size)
{
    if (offset > bytes.size() || bytes.size() - offset < size)
        return 0;
    std::uint32_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    return value;
}

std::uint16_t read16(const Bytes& bytes, std::size_t offset)
{
    return static_cast<std::uint16_t>(readNumber(bytes, offset, 2));
}

std::uint32_t read32(const Bytes& bytes, std::size_t offset)
{
    return readNumber(bytes, offset, 4);
}

std::uint64_t read64(const Bytes& bytes, std::size_t offset)
{
    return read32(bytes, offset) | static_cast<std::uint64_t>(read32(bytes, offset + 4)) << 32;
}

// A file that is read in pieces, each checked against its size.
class ModuleFile {
public:
    explicit ModuleFile(const std::string& name)
        : m_file(name), m_size(m_file.isOpen() ? m_file.size() : 0)
    {}

    // Empty if the piece does not lie in the file as a whole.
    Bytes read(std::uint64_t offset, std::uint64_t size)
    {
        if (size > MaximalSize || offset > m_size || m_size - offset < size)
            return {};
        Bytes bytes(static_cast<std::size_t>(size));
        std::size_t count = 0;
        if (!m_file.read(offset, bytes.data(), bytes.size(), count) || count != bytes.size())
            return {};
        return bytes;
    }

private:
    Platform::InputFile m_file;
    std::uint64_t m_size;
};

// A Windows module (the PE format): where its resources lie in the file and in memory. Every offset
// comes from the file and may be wrong: reads outside of the file give nothing, numbers outside of
// what was read give 0, and no loop runs longer than what was read.
class PortableExecutable {
public:
    // The file header's offset is at 0x3C; 4 bytes of signature and 20 of header come before the
    // optional header, and after that one the table of sections, 40 bytes each. The optional
    // header ends in a list of directories, whose third is that of the resources.
    explicit PortableExecutable(ModuleFile& file) : m_file(file)
    {
        constexpr std::uint32_t Signature = 0x00004550; // "PE", 0, 0
        const std::uint64_t header = read32(file.read(0x3C, 4), 0);
        const Bytes start = file.read(header, 24);
        if (read32(start, 0) != Signature)
            return;
        const std::uint16_t optionalSize = read16(start, 20);
        const Bytes optional = file.read(header + 24, optionalSize);
        const bool wide = read16(optional, 0) == 0x20B;
        m_sections = file.read(header + 24 + optionalSize, 40ULL * read16(start, 6));
        const std::size_t directories = wide ? 112 : 96;
        if (read32(optional, directories - 4) > 2)
            m_resources = offsetOf(read32(optional, directories + 16));
    }

    // The first version resource; empty if there is none. Resources are a tree of three levels:
    // type, name, language.
    Bytes versionResource() const
    {
        if (!m_resources)
            return {};
        constexpr std::uint32_t VersionType = 16;
        std::optional<std::uint32_t> entry = findEntry(0, VersionType);
        for (int level = 0; level < 2 && entry; ++level)
            entry = (*entry & Subdirectory) != 0 ? findEntry(*entry & ~Subdirectory, std::nullopt)
                                                 : std::nullopt;
        if (!entry || (*entry & Subdirectory) != 0)
            return {};
        const Bytes data = m_file.read(*m_resources + *entry, 16);
        const std::optional<std::uint64_t> offset = offsetOf(read32(data, 0));
        return offset ? m_file.read(*offset, read32(data, 4)) : Bytes();
    }

private:
    static constexpr std::uint32_t Subdirectory = 0x80000000;

    // Where in the file an address of the loaded module comes from.
    std::optional<std::uint64_t> offsetOf(std::uint32_t address) const
    {
        for (std::size_t section = 0; section + 40 <= m_sections.size(); section += 40) {
            const std::uint32_t start = read32(m_sections, section + 12);
            if (address >= start && address - start < read32(m_sections, section + 16))
                return static_cast<std::uint64_t>(read32(m_sections, section + 20)) +
                       (address - start);
        }
        return std::nullopt;
    }

    // What the entry `id` (or just the first one) of a resource directory points to.
    std::optional<std::uint32_t> findEntry(std::uint32_t directory,
                                           std::optional<std::uint32_t> id) const
    {
        const Bytes header = m_file.read(*m_resources + directory, 16);
        const std::uint32_t count = read16(header, 12) + 0U + read16(header, 14);
        const Bytes entries = m_file.read(*m_resources + directory + 16, 8ULL * count);
        for (std::size_t i = 0; i + 8 <= entries.size(); i += 8) {
            if (!id || read32(entries, i) == *id)
                return read32(entries, i + 4);
        }
        return std::nullopt;
    }

    ModuleFile& m_file;
    Bytes m_sections;
    std::optional<std::uint64_t> m_resources;
};

// One node of the version resource's tree: header, key, value, inner blocks. All offsets are those
// of the whole resource, and each is inside it.
struct Block {
    std::size_t end = 0;
    std::u16string key;
    std::size_t value = 0;
    std::size_t children = 0;
};

std::size_t aligned(std::size_t offset)
{
    return (offset + 3) & ~static_cast<std::size_t>(3);
}

// Units up to the first NUL or to `end`; `offset` moves past the NUL.
std::u16string readUnits(const Bytes& bytes, std::size_t& offset, std::size_t end)
{
    std::u16string text;
    while (offset + 2 <= end) {
        const char16_t unit = read16(bytes, offset);
        offset += 2;
        if (unit == 0)
            break;
        text += unit;
    }
    return text;
}

std::optional<Block> readBlock(const Bytes& bytes, std::size_t start, std::size_t limit)
{
    const std::size_t length = read16(bytes, start);
    if (start + 6 > limit || length < 6 || length > limit - start)
        return std::nullopt;
    Block block;
    block.end = start + length;
    std::size_t offset = start + 6;
    block.key = readUnits(bytes, offset, block.end);
    block.value = std::min(aligned(offset), block.end);
    // The value's size counts units in texts and bytes elsewhere.
    const std::size_t unit = read16(bytes, start + 4) == 1 ? 2 : 1;
    block.children = std::min(aligned(block.value + unit * read16(bytes, start + 2)), block.end);
    return block;
}

template <class Visit>
void forEachChild(const Bytes& bytes, const Block& parent, Visit visit)
{
    std::size_t offset = parent.children;
    while (const std::optional<Block> child = readBlock(bytes, offset, parent.end)) {
        visit(*child);
        offset = aligned(child->end);
    }
}

// Keys are ASCII; anything else matches nothing.
std::string toKey(const std::u16string& units)
{
    std::string key;
    for (const char16_t unit : units)
        key += unit < 0x80 ? static_cast<char>(unit) : '?';
    return key;
}

std::string toText(const std::u16string& units)
{
    return toNarrow(std::wstring(units.begin(), units.end()));
}

std::vector<ModuleString> readResourceStrings(const Bytes& bytes)
{
    std::vector<ModuleString> strings;
    const std::optional<Block> root = readBlock(bytes, 0, bytes.size());
    if (!root)
        return strings;
    forEachChild(bytes, *root, [&](const Block& info) {
        if (info.key != u"StringFileInfo")
            return;
        forEachChild(bytes, info, [&](const Block& table) {
            forEachChild(bytes, table, [&](const Block& string) {
                std::size_t offset = string.value;
                const std::u16string text = readUnits(bytes, offset, string.end);
                strings.push_back({toKey(table.key), toKey(string.key), toText(text)});
            });
        });
    });
    return strings;
}

// The section that mdtools_add_version_resource() puts into an ELF file: a mark, then texts in
// UTF-8, each with its NUL: language, and name and text by turns.
constexpr char SectionName[] = ".mdtools.version";
constexpr char SectionMark[] = "MdTools version 1";

// Only 64-bit little-endian files are read. Their header has the offset of the section table at 40,
// the number of sections at 60, and at 62 which of them holds the sections' names.
Bytes findSection(ModuleFile& file)
{
    const Bytes header = file.read(0, 64);
    constexpr std::uint32_t Magic = 0x464C457F; // 0x7F, "ELF"
    if (read32(header, 0) != Magic || header[4] != 2 || header[5] != 1)
        return {};
    constexpr std::size_t EntrySize = 64;
    const Bytes table = file.read(read64(header, 40), EntrySize * read16(header, 60));
    const std::uint64_t names = read64(table, EntrySize * read16(header, 62) + 24);
    for (std::size_t i = 0; i + EntrySize <= table.size(); i += EntrySize) {
        const Bytes name = file.read(names + read32(table, i), sizeof(SectionName));
        if (std::equal(name.begin(), name.end(), std::begin(SectionName), std::end(SectionName)))
            return file.read(read64(table, i + 24), read64(table, i + 32));
    }
    return {};
}

std::u16string decodeUtf8(const std::string& text)
{
    std::u16string units;
    for (std::size_t i = 0; i < text.size();) {
        const unsigned lead = static_cast<unsigned char>(text[i++]);
        unsigned more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        std::uint32_t point = more == 0 ? lead : lead & (0x3FU >> more);
        for (; more > 0 && i < text.size(); --more)
            point = point << 6 | (static_cast<unsigned char>(text[i++]) & 0x3FU);
        if (point >= 0x10000) {
            point -= 0x10000;
            units += static_cast<char16_t>(0xD800 | (point >> 10 & 0x3FF));
            point = 0xDC00 | (point & 0x3FF);
        }
        units += static_cast<char16_t>(point);
    }
    return units;
}

std::vector<ModuleString> readSectionStrings(const Bytes& section)
{
    std::vector<std::string> texts(1);
    for (const unsigned char c : section) {
        if (c == 0)
            texts.emplace_back();
        else
            texts.back() += static_cast<char>(c);
    }
    std::vector<ModuleString> strings;
    if (texts.size() < 2 || texts[0] != SectionMark)
        return strings;
    for (std::size_t i = 2; i + 2 < texts.size(); i += 2)
        strings.push_back({texts[1], texts[i], toText(decodeUtf8(texts[i + 1]))});
    return strings;
}

}

std::vector<ModuleString> readModuleStrings(const std::string& file)
{
    ModuleFile module(file);
    constexpr std::uint16_t DosMagic = 0x5A4D; // "MZ"
    if (read16(module.read(0, 2), 0) == DosMagic)
        return readResourceStrings(PortableExecutable(module).versionResource());
    return readSectionStrings(findSection(module));
}

}
