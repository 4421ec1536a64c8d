#include <mdtools/version_info.h>

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include "platform/module.h"
#include "versions/module_strings.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Tools {

namespace {

struct Found {
    std::string productName;
    std::string productVersion;
    std::string legalCopyright;
};

// Names in a version resource are found without regard to case.
bool takeString(const std::vector<ModuleString>& all, const std::string& language,
                const std::string& name, std::string& text)
{
    const auto found = std::find_if(all.begin(), all.end(), [&](const ModuleString& string) {
        return Mbcs::Strieq(string.language, language) && Mbcs::Strieq(string.name, name);
    });
    if (found == all.end())
        return false;
    text = found->text;
    return true;
}

// The strings of the first language that has all three. One that lacks some has left others in
// `strings` by then; those count only if a later language overwrites them all.
bool findStrings(const std::vector<ModuleString>& all, const std::vector<std::string>& languages,
                 Found& strings)
{
    return std::any_of(languages.begin(), languages.end(), [&](const std::string& language) {
        return takeString(all, language, "ProductName", strings.productName) &&
               takeString(all, language, "ProductVersion", strings.productVersion) &&
               takeString(all, language, "LegalCopyright", strings.legalCopyright);
    });
}

}

VersionInfo::VersionInfo(const std::string& file, const std::string& languages)
{
    read(file, languages);
}

VersionInfo::VersionInfo(ModuleHandle module, const std::string& languages)
{
    read(Platform::getModuleFile(module), languages);
}

void VersionInfo::read(const std::string& file, const std::string& languages)
{
    Found strings;
    if (!findStrings(readModuleStrings(file), tokenize(languages, ","), strings))
        return;
    m_productName = std::move(strings.productName);
    m_productVersion = std::move(strings.productVersion);
    m_legalCopyright = std::move(strings.legalCopyright);
    const std::vector<std::string> words = tokenize(m_productVersion, " ");
    if (!words.empty())
        m_version = words[0];
    if (words.size() > 1)
        m_buildNumber = words[1];
}

const std::string& VersionInfo::getProductName() const
{
    return m_productName;
}

const std::string& VersionInfo::getProductVersion() const
{
    return m_productVersion;
}

const std::string& VersionInfo::getVersion() const
{
    return m_version;
}

const std::string& VersionInfo::getBuildNumber() const
{
    return m_buildNumber;
}

const std::string& VersionInfo::getLegalCopyright() const
{
    return m_legalCopyright;
}

}
