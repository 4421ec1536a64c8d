#include "support/files.h"

#include <clocale>
#include <filesystem>

#include <windows.h>

namespace MdToolsTest {

const bool ProtectedFilesCannotBeOpened = false;
const bool OpenFilesAreNotShared = false;
const bool DoubleByteNamesReachTheDisk = false;
const std::size_t LongestPath = MAX_PATH - 1;

// Wine finds the end first and writes there afterwards.
bool appendsInOneStep()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

void setWriteProtected(const std::string& path, bool isProtected)
{
    ::SetFileAttributesA(path.c_str(),
                         isProtected ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
}

bool makeLink(const std::string& target, const std::string& link)
{
    const DWORD flags = std::filesystem::is_directory(target) ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
    // Wine reports that it made the link, but there is none.
    return ::CreateSymbolicLinkA(link.c_str(), target.c_str(), flags) != 0 &&
           ::GetFileAttributesA(link.c_str()) != INVALID_FILE_ATTRIBUTES;
}

NamedPipe::NamedPipe(const std::string&, Reader) {}
NamedPipe::~NamedPipe() = default;
void NamedPipe::close() {}

std::string NamedPipe::read() const
{
    return {};
}

unsigned setFileMask(unsigned)
{
    return 0;
}

bool setCommaLocale()
{
    return std::setlocale(LC_ALL, "German_Germany.1252") != nullptr;
}

HeldFile::HeldFile(const std::string& path)
    : m_handle(reinterpret_cast<std::intptr_t>(::CreateFileA(
          path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)))
{}

HeldFile::~HeldFile()
{
    ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
}

SmallDisk::SmallDisk(const std::string&, std::size_t) : m_reason("Wine mounts no disks.") {}
SmallDisk::~SmallDisk() = default;

OrdinaryUser::OrdinaryUser() = default;
OrdinaryUser::~OrdinaryUser() = default;

int limitOpenFiles(int count)
{
    return count;
}

}
