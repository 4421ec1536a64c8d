#include "files/name_list.h"

#include "text/code_page.h"

#include <algorithm>

namespace Tools {

namespace {

// Big-endian, so that the order of the numbers is that of the bytes.
std::uint64_t firstBytes(std::string_view text)
{
    constexpr std::size_t Count = sizeof(std::uint64_t);
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < Count; ++i)
        key = key << 8U | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
    return key;
}

}

void NameList::add(std::string_view name, bool isDirectory)
{
    m_items.push_back({0, m_names.size(), static_cast<std::uint32_t>(name.size()), isDirectory});
    m_names += name;
}

// Prefix keys: the bytes with which the names begin to differ are compared as one number, and only
// equal keys look into the text.
void NameList::sort()
{
    if (m_items.size() < 2)
        return;
    const std::string lowered = lowerAll();
    const std::size_t prefix = commonPrefix(lowered);
    for (Item& item : m_items)
        item.key = firstBytes(text(lowered, item).substr(prefix));
    // Most pairs differ in their keys already.
    const auto isLess = [&](const Item& a, const Item& b) {
        if (a.key != b.key)
            return a.key < b.key;
        const int order = text(lowered, a).compare(text(lowered, b));
        return order != 0 ? order < 0 : text(m_names, a) < text(m_names, b);
    };
    // Some systems give names in this order anyway.
    if (!std::is_sorted(m_items.begin(), m_items.end(), isLess))
        std::sort(m_items.begin(), m_items.end(), isLess);
}

std::string NameList::lowerAll() const
{
    const CodePage& page = CodePage::get();
    std::string lowered = m_names;
    // The names follow each other without anything between them: where a character begins is known
    // within each of them only.
    if (page.hasLeadBytes()) {
        for (const Item& item : m_items)
            page.changeCase(lowered.data() + item.offset, item.length, page.lower());
    } else {
        page.changeCase(lowered.data(), lowered.size(), page.lower());
    }
    return lowered;
}

std::size_t NameList::commonPrefix(const std::string& lowered) const
{
    const std::string_view first = text(lowered, m_items.front());
    std::size_t length = first.size();
    for (const Item& item : m_items) {
        const std::string_view other = text(lowered, item).substr(0, length);
        const auto end = std::mismatch(other.begin(), other.end(), first.begin()).first;
        length = static_cast<std::size_t>(end - other.begin());
    }
    return length;
}

}
