#pragma once

#include <mdtools/export.h>
#include <mdtools/platform_types.h>

#include <string>

namespace Tools {

// What a module (a program or a library) says about itself in its version resource. All texts are
// empty where it says nothing; nothing is ever thrown. A value; any thread may make one.
//
// A Windows module's resource is read on both systems; on Linux also what
// mdtools_add_version_resource() of the library's CMake package puts into an ELF file.
class MDTOOLS_API VersionInfo {
public:
    // `languages` lists keys of language and code page, eight hexadecimal digits each, separated by
    // commas: "040704b0,040704e4" is German in Unicode, then German in code page 1252. The first
    // key under which product name, product version and legal copyright are all found is used.
    VersionInfo(const std::string& file, const std::string& languages);
    // The module's own file; null is the running program. On Linux it is found whatever name the
    // module was loaded by, and a running program's also when it has been removed or replaced.
    VersionInfo(ModuleHandle module, const std::string& languages);

    const std::string& getProductName() const;
    const std::string& getProductVersion() const;
    // The first word of the product version ("24.1" of "24.1 15052023").
    const std::string& getVersion() const;
    // The second word of the product version, the text of a BuildNumber; may be missing.
    const std::string& getBuildNumber() const;
    const std::string& getLegalCopyright() const;

private:
    void read(const std::string& file, const std::string& languages);

    std::string m_productName;
    std::string m_productVersion;
    std::string m_version;
    std::string m_buildNumber;
    std::string m_legalCopyright;
};

}
