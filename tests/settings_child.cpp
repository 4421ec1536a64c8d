// The other process of the settings' tests:
//     settings_child read HIVE PATH NAME            prints the word or text, or "invalid"
//     settings_child write HIVE PATH NAME TEXT      stores a text
//     settings_child words HIVE PATH PREFIX COUNT   stores COUNT words, each under its own name
//     settings_child count HIVE PATH NAME           stores 1, 2, 3 ... and prints each when stored
//     settings_child backup HIVE PATH NAME FOLDER   stores and reads back 0 to 99, and after each
//                                                   reads and copies the files of the store
#include <mdtools/directory.h>
#include <mdtools/file.h>
#include <mdtools/registry.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace Tools;

RegistryValue makeValue(const std::string& name, RegistryValue::Type type)
{
    RegistryValue value;
    value.setName(name).setType(type);
    return value;
}

int read(const RegistryKey& key, const std::string& name)
{
    const RegistryValue value = key[name];
    if (value.type() == RegistryValue::DWord)
        std::printf("%u\n", value.getDWord());
    else
        std::printf("%s\n", value.valid() ? value.getString().c_str() : "invalid");
    return 0;
}

int writeText(RegistryKey key, const std::string& name, const std::string& text)
{
    key.add(makeValue(name, RegistryValue::String).setData(text));
    return key.valid() ? 0 : 1;
}

int writeWords(RegistryKey key, const std::string& prefix, int count)
{
    for (int i = 0; i < count; ++i)
        key.add(makeValue(prefix + std::to_string(i), RegistryValue::DWord).setData(i));
    return key.valid() ? 0 : 1;
}

int countUp(RegistryKey key, const std::string& name)
{
    for (unsigned i = 1;; ++i) {
        key.add(makeValue(name, RegistryValue::DWord).setData(i));
        std::printf("%u\n", i);
        std::fflush(stdout);
    }
}

// 1 as soon as a word is not what was stored last, or a copy fails.
int backUp(RegistryKey key, const std::string& name, const std::string& folder)
{
    const std::string copies = folder + "-" + name;
    for (unsigned i = 0; i < 100; ++i) {
        key.add(makeValue(name, RegistryValue::DWord).setData(i));
        for (const char* file : {"/user.db", "/user.db-wal", "/user.db-shm"})
            File::isEqual(folder + file, folder + file);
        if (!Directory::copy(folder, copies) || key[name].getDWord() != i)
            return 1;
        Directory::removeRecursively(copies);
    }
    return 0;
}

}

int main(int argc, char** argv)
{
    if (argc < 5)
        return 2;
    const std::string command = argv[1];
    const auto hive = static_cast<Registry::Hive>(std::atoi(argv[2]));
    const RegistryKey key = Registry::find(hive, argv[3], command != "read");
    if (command == "read")
        return read(key, argv[4]);
    if (command == "write" && argc > 5)
        return writeText(key, argv[4], argv[5]);
    if (command == "words" && argc > 5)
        return writeWords(key, argv[4], std::atoi(argv[5]));
    if (command == "backup" && argc > 5)
        return backUp(key, argv[4], argv[5]);
    return command == "count" ? countUp(key, argv[4]) : 2;
}
