#include <mdtools/application_registry.h>

#include <mdtools/constants.h>

#include <cassert>

namespace Tools {

namespace {

std::string below(const std::string& path, const std::string& sub)
{
    return sub.empty() ? path : path + C::Backslash + sub;
}

}

std::string getMerodaRegistryPath(const std::string& sub)
{
    return below("SOFTWARE\\MERODA", sub);
}

std::string getVokMerodaRegistryPath(const std::string& sub)
{
    return below("SOFTWARE\\VOK\\MERODA", sub);
}

// Written before other threads start and only read afterwards, so it needs no lock.
ApplicationRegistry* ApplicationRegistry::ms_instance = nullptr;

ApplicationRegistry::ApplicationRegistry()
    : m_appFolder(std::make_unique<AppFolder>("")),
      m_appSettingsFolder(std::make_unique<AppFolder>("Settings"))
{}

ApplicationRegistry::~ApplicationRegistry() = default;

const ApplicationRegistry::Folder* ApplicationRegistry::getAppFolder() const
{
    return m_appFolder.get();
}

const ApplicationRegistry::Folder* ApplicationRegistry::getAppSettingsFolder() const
{
    return m_appSettingsFolder.get();
}

ApplicationRegistry* ApplicationRegistry::get()
{
    return ms_instance;
}

void ApplicationRegistry::set(ApplicationRegistry* instance)
{
    ms_instance = instance;
}

ApplicationRegistry::Folder::~Folder() = default;

// All paths are composed anew at each call: the program's path may depend on what is open just now.
std::string ApplicationRegistry::Folder::composeRelPath(const std::string& sub) const
{
    return below(getRelPath(), sub);
}

std::string ApplicationRegistry::Folder::composeAbsPath(const std::string& sub) const
{
    return getMerodaRegistryPath(composeRelPath(sub));
}

std::string ApplicationRegistry::Folder::getAbsPath() const
{
    return getMerodaRegistryPath(getRelPath());
}

RegistryKey ApplicationRegistry::Folder::findKey(const std::string& sub, bool create) const
{
    return Registry::find(getHive(), composeAbsPath(sub), create);
}

RegistryKey ApplicationRegistry::Folder::getKey() const
{
    return findKey("", false);
}

Registrar ApplicationRegistry::Folder::getRegistrar(const std::string& sub) const
{
    return Registrar(composeRelPath(sub), getHive());
}

ApplicationRegistry::AppFolder::AppFolder(const std::string& name) : m_name(name) {}

ApplicationRegistry::AppFolder::~AppFolder() = default;

std::string ApplicationRegistry::AppFolder::getRelPath() const
{
    // Asked too early: a mistake of the caller, which must do no harm in a release build.
    assert(ms_instance != nullptr);
    return below(ms_instance != nullptr ? ms_instance->getAppRelPath() : std::string(), m_name);
}

Registry::Hive ApplicationRegistry::AppFolder::getHive() const
{
    return Registry::CurrentUser;
}

}
