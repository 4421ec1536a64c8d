#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tools {

// The names of one directory: an arena of text and an index, which is put in order without case. An
// index entry carries a prefix key, so that few comparisons look into the text.
class NameList {
public:
    void add(std::string_view name, bool isDirectory);

    // By the lowered bytes; names that differ in case only by the bytes they have.
    void sort();

    std::size_t size() const { return m_items.size(); }
    std::string_view name(std::size_t i) const { return text(m_names, m_items[i]); }
    bool isDirectory(std::size_t i) const { return m_items[i].isDirectory; }

private:
    struct Item {
        // The lowered bytes with which the names of the list begin to differ, the first one on top.
        std::uint64_t key;
        std::size_t offset;
        std::uint32_t length;
        bool isDirectory;
    };

    static std::string_view text(const std::string& block, const Item& item)
    {
        return std::string_view(block).substr(item.offset, item.length);
    }
    std::string lowerAll() const;
    std::size_t commonPrefix(const std::string& lowered) const;

    std::string m_names;
    std::vector<Item> m_items;
};

}
