#pragma once

#include <mdtools/export.h>
#include <mdtools/geometry.h>
#include <mdtools/nullable.h>
#include <mdtools/registry.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Where the programs of the family keep their settings. Everything lies below "SOFTWARE\MERODA":
// under the current user a folder for each program, with its settings in the subfolder "Settings";
// under the local machine what the installation wrote down.
namespace Tools {

class Registrar;

// "SOFTWARE\MERODA" and "SOFTWARE\VOK\MERODA", followed by "\" and `sub` unless that is empty.
MDTOOLS_API std::string getMerodaRegistryPath(const std::string& sub);
MDTOOLS_API std::string getVokMerodaRegistryPath(const std::string& sub);

// Says where this program's settings live. A program derives its own class from it, creates one
// object at start-up, registers it with set() and keeps it for as long as settings are used:
//     class FrameRegistry : public Tools::ApplicationRegistry {
//     public:
//         FrameRegistry() { set(this); }
//         std::string getAppRelPath() const override { return "Frame"; }
//     };
// Register before other threads start; after that any thread may ask.
class MDTOOLS_API ApplicationRegistry {
public:
    class Folder;
    class AppFolder;

    ApplicationRegistry(const ApplicationRegistry&) = delete;
    ApplicationRegistry& operator=(const ApplicationRegistry&) = delete;
    virtual ~ApplicationRegistry();

    // The program's path below "SOFTWARE\MERODA", without separators at its ends: the name of the
    // program, perhaps with a version below it.
    virtual std::string getAppRelPath() const = 0;

    // The program's own folder, and "Settings" in it. They belong to this object.
    virtual const Folder* getAppFolder() const;
    virtual const Folder* getAppSettingsFolder() const;

    // The registered object; null before there is one.
    static ApplicationRegistry* get();

protected:
    ApplicationRegistry();

    // Does not own the object, and leaves one that was registered before alone. An object that is
    // destroyed stays registered: register another one before the next use.
    static void set(ApplicationRegistry* instance);

private:
    static ApplicationRegistry* ms_instance;

    std::unique_ptr<AppFolder> m_appFolder;
    std::unique_ptr<AppFolder> m_appSettingsFolder;
};

// A folder of settings below "SOFTWARE\MERODA".
class MDTOOLS_API ApplicationRegistry::Folder {
public:
    Folder() = default;
    Folder(const Folder& other) = default;
    Folder(Folder&& other) = default;
    Folder& operator=(const Folder& other) = default;
    Folder& operator=(Folder&& other) = default;
    virtual ~Folder();

    // The folder's path below "SOFTWARE\MERODA", and the root it is under.
    virtual std::string getRelPath() const = 0;
    virtual Registry::Hive getHive() const = 0;

    // An empty `sub` means the folder itself in all of these; else a folder below it.
    // Relative paths begin below "SOFTWARE\MERODA", absolute ones below the hive.
    std::string composeRelPath(const std::string& sub) const;
    std::string composeAbsPath(const std::string& sub) const;
    std::string getAbsPath() const;

    // The key; invalid if it is missing and shall not be created.
    RegistryKey findKey(const std::string& sub, bool create) const;
    RegistryKey getKey() const;

    // Reads and writes the values of the folder.
    Registrar getRegistrar(const std::string& sub) const;
};

// A folder of the running program, under the current user. Its path follows the registered
// ApplicationRegistry, so it is of no use before one is registered.
class MDTOOLS_API ApplicationRegistry::AppFolder : public ApplicationRegistry::Folder {
public:
    // Below the program's path; that path itself if the name is empty.
    explicit AppFolder(const std::string& name);
    AppFolder(const AppFolder& other) = default;
    AppFolder(AppFolder&& other) = default;
    AppFolder& operator=(const AppFolder& other) = default;
    AppFolder& operator=(AppFolder&& other) = default;
    ~AppFolder() override;

    std::string getRelPath() const override;
    Registry::Hive getHive() const override;

private:
    std::string m_name;
};

// Reads and writes typed values in one folder. A read that finds no value, or one of another type
// than it wants, comes back empty, so "not set" differs from every value; the caller has its own
// default. Writes create the folder if it is missing, and replace the value; if they fail, nothing
// is said. Each call opens the folder anew. May be used from several threads at once.
class MDTOOLS_API Registrar {
public:
    // A path below "SOFTWARE\MERODA".
    Registrar(const std::string& relPath, Registry::Hive hive);

    // Only values of the type String; an ExpandString is none.
    mdt::Nullable<std::string> readString(const std::string& name) const;
    mdt::Nullable<std::uint32_t> readDWord(const std::string& name) const;

    // Integers and booleans are stored as String or as DWord, and found only as the type they were
    // written with; any other type reads empty and writes nothing. In a text nothing
    // may follow the number. Every number but 0 is true.
    mdt::Nullable<int> readInt(const std::string& name, RegistryValue::Type type) const;
    mdt::Nullable<bool> readBool(const std::string& name, RegistryValue::Type type) const;

    // A MultiString of numbers. Texts that do not begin with a number are left out of the list.
    std::vector<int> readInts(const std::string& name) const;
    // The first numbers of such a list: left, top, right, bottom; width, height. Empty if there are
    // too few.
    mdt::Nullable<Rectangle<int>> readIntRect(const std::string& name) const;
    mdt::Nullable<Size<int>> readIntSize(const std::string& name) const;

    void writeString(const std::string& name, const std::string& text) const;
    void writeDWord(const std::string& name, std::uint32_t word) const;
    void writeInt(const std::string& name, int value, RegistryValue::Type type) const;
    void writeBool(const std::string& name, bool value, RegistryValue::Type type) const;
    void writeInts(const std::string& name, const std::vector<int>& list) const;
    // Any forward sequence of int.
    template <class Iterator>
    void writeInts(const std::string& name, Iterator first, Iterator last) const
    {
        writeInts(name, std::vector<int>(first, last));
    }
    void writeIntRect(const std::string& name, const Rectangle<int>& rectangle) const;
    void writeIntSize(const std::string& name, const Size<int>& size) const;

private:
    std::string getAbsPath() const;
    RegistryValue findValue(const std::string& name) const;
    RegistryKey findWritableKey() const;
    void write(RegistryValue value, const std::string& name) const;

    std::string m_relPath;
    Registry::Hive m_hive;
};

}
