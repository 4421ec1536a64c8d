#pragma once

#include "files/wildcard.h"
#include "platform/folder.h"

#include <functional>
#include <string>
#include <vector>

// Whole directory trees. Links are never followed, no depth is too deep, and what fails does not
// stop the rest.
namespace Tools::Tree {

// Visitor of a depth-first walk with an explicit stack.
class Visitor {
public:
    virtual ~Visitor() = default;

    // The folder at hand, first of all the root. Appends the names of the subfolders to walk into.
    virtual void visit(const Platform::Folder& folder, std::vector<std::string>& subfolders) = 0;
    // Before the visit of subfolder `name`; false passes it over.
    virtual bool enter(const Platform::Folder& subfolder, const std::string& name) = 0;
    // After everything below subfolder `name` of `folder` was visited; false ends the walk.
    virtual bool leave(const Platform::Folder& folder, const std::string& name) = 0;
};

// False if a subfolder could not be opened, or if the walk ended early.
bool walk(Platform::Folder root, Visitor& visitor);

// Copies what the patterns let through into `target`, which must exist. `report` is called with the
// path and the system's error for each directory that cannot be made.
struct CopyRules {
    std::vector<Wildcard> includes;
    std::vector<Wildcard> excludes;
    std::function<void(const std::string& path, Platform::ErrorCode code)> report;
};
bool copy(const std::string& source, const std::string& target, const CopyRules& rules);

// Write-protected files go only if `force`.
bool remove(const std::string& path, bool force);

}
