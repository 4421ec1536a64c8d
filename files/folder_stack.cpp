#include "files/folder_stack.h"

namespace Tools {

namespace {

constexpr std::size_t MostOpen = 32;

}

void FolderStack::push(Platform::Folder folder)
{
    if (m_levels.size() >= MostOpen) {
        // The one that drops out of the window; its identity is what the way back is checked
        // against.
        Level& level = m_levels[m_levels.size() - MostOpen];
        if (level.folder.valid()) {
            level.identity = level.folder.identity();
            level.folder = Platform::Folder();
        }
    }
    m_levels.push_back({std::move(folder), {}});
}

bool FolderStack::pop()
{
    const Platform::Folder child = std::move(m_levels.back().folder);
    m_levels.pop_back();
    if (m_levels.empty() || top().valid())
        return true;
    Level& level = m_levels.back();
    level.folder = child.openParent();
    return level.folder.valid() && level.folder.identity() == level.identity;
}

}
