#pragma once

#include <mdtools/file.h>

#include "files/wildcard.h"
#include "platform/folder.h"

#include <functional>
#include <string>
#include <vector>

// Searches by name, in one directory or a whole tree.
namespace Tools::NameSearch {

// As File::findByWildCard.
void find(const std::string& directory, const Wildcard& pattern, bool recursive,
          std::vector<File::Info>& result);

// Removes the files that match, directories stay. `report` is called with the name and the system's
// error for each one that cannot be removed. False if anything remained or could not be looked at.
using Report = std::function<void(const std::string& name, Platform::ErrorCode code)>;
bool remove(const std::string& directory, const Wildcard& pattern, bool recursive,
            const Report& report);

}
