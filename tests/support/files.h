#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace MdToolsTest {

// The path of an entry of the work directory.
std::string workPath(const std::string& name);

// Whole files, byte by byte.
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);
// In text mode: the line ends of the platform are "\n" here.
std::string readText(const std::string& path);
std::vector<std::string> readLines(const std::string& path);

// What Wine does not do as Windows does: as root it opens write-protected files for
// writing, its run-time library lets everybody open what a program has open, and names in a code
// page reach the disk only if the locale of the page is installed.
extern const bool ProtectedFilesCannotBeOpened;
extern const bool OpenFilesAreNotShared;
extern const bool DoubleByteNamesReachTheDisk;

// A write to a file that is open for appending goes to the end in one step, as both systems
// promise. Under Wine it does not, so programs overwrite each other's lines.
bool appendsInOneStep();

void setWriteProtected(const std::string& path, bool isProtected);

// A symbolic link. False where the system does not let this user make one.
bool makeLink(const std::string& target, const std::string& link);

// A pipe with a name, and somebody who reads it for as long as the object lives; or without a
// reader. Not there where the file system knows no such thing.
class NamedPipe {
public:
    enum class Reader { None, Open };
    NamedPipe(const std::string& path, Reader reader);
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;
    ~NamedPipe();

    bool isThere() const { return m_isThere; }
    // What was written by now.
    std::string read() const;
    // The reader goes.
    void close();

private:
    bool m_isThere = false;
    std::intptr_t m_handle = -1;
};

// Sets what permissions new files do not get, and returns what that was; 0 where there are none.
unsigned setFileMask(unsigned mask);

// Switches to a locale with a decimal comma; false where none is installed.
bool setCommaLocale();

// The longest path that one call of the system takes.
extern const std::size_t LongestPath;

// Holds a file for itself alone, as another program would.
class HeldFile {
public:
    explicit HeldFile(const std::string& path);
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;
    ~HeldFile();

private:
    std::intptr_t m_handle;
};

// A disk of its own with room for `size` bytes, at the directory `path`, which it makes. Not there
// (why() gives the reason) if this user may not mount one.
class SmallDisk {
public:
    SmallDisk(const std::string& path, std::size_t size);
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk();

    bool isThere() const { return m_reason.empty(); }
    const std::string& why() const { return m_reason; }

private:
    std::string m_path;
    std::string m_reason;
};

// While it lives, this process has the rights of an ordinary user, who owns nothing.
class OrdinaryUser {
public:
    OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser();
    // False where the system knows no rights of this kind.
    bool isThere() const { return m_isThere; }

private:
    bool m_isThere = false;
};

// Lets this process open no more than `count` files; returns the former number.
int limitOpenFiles(int count);

}
