#pragma once

#include "platform/folder.h"

#include <vector>

namespace Tools {

// A stack with a window of open handles: the folders from the start of a walk down to the current
// one. Only the deepest few are kept open, so that depth costs no handles; the others are opened
// again on the way back, and only as what they were before.
class FolderStack {
public:
    void push(Platform::Folder folder);
    // Back to the parent. False if the folder was moved elsewhere meanwhile: there is no way back.
    bool pop();

    const Platform::Folder& top() const { return m_levels.back().folder; }

private:
    struct Level {
        Platform::Folder folder;
        // Known only while the folder is closed.
        Platform::FolderIdentity identity;
    };
    std::vector<Level> m_levels;
};

}
