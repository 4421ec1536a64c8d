#include "platform/posix/native_path.h"

#include "platform/codepage.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

struct Cause {
    int number;
    ErrorCode code;
};

// In the order of their codes. The list is short and failures are rare.
constexpr Cause Causes[] = {
    {ENOENT, 2},         {ENOTDIR, 3},  {EMFILE, 4},   {ENFILE, 4},      {EACCES, 5},
    {EPERM, 5},          {EISDIR, 5},   {EBADF, 6},    {ENOMEM, 8},      {EXDEV, 17},
    {EROFS, 19},         {ENXIO, 21},   {EBUSY, 32},   {ETXTBSY, 32},    {EAGAIN, 32},
    {EINVAL, 87},        {ENOSPC, 112}, {EDQUOT, 112}, {ENOTEMPTY, 145}, {EEXIST, 183},
    {ENAMETOOLONG, 206}, {EFBIG, 223},  {EIO, 1117},   {EMLINK, 1142},   {ELOOP, 1921},
};
constexpr ErrorCode PathNotFound = 3;
constexpr ErrorCode GeneralFailure = 31;

// The first byte of a double-byte character.
bool isLeadByte(char c)
{
    struct LeadBytes {
        bool isLead[256];
        LeadBytes() { readLeadBytes(isLead); }
    };
    static const LeadBytes bytes;
    return bytes.isLead[static_cast<unsigned char>(c)];
}

}

ErrorCode errorCode(int cause)
{
    const auto* found = std::find_if(std::begin(Causes), std::end(Causes),
                                     [cause](const Cause& c) { return c.number == cause; });
    return found == std::end(Causes) ? GeneralFailure : found->code;
}

void toSlashes(std::string& path)
{
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '\\')
            path[i] = '/';
        else if (isLeadByte(path[i]))
            ++i;
    }
}

// The invariant: `result` is the part before `begin` in its final form, `root` what ".." may not
// take away of it, which grows with each leading "..".
void resolveDots(std::string& path)
{
    if (!path.starts_with('.') && path.find("/.") == std::string::npos)
        return;
    std::string result(path, 0, path.starts_with('/') ? 1 : 0);
    std::size_t root = result.size();
    for (std::size_t begin = root, end = 0; begin < path.size(); begin = end) {
        end = std::min(path.find('/', begin), path.size() - 1) + 1;
        const std::string_view part(path.data() + begin, end - begin);
        const std::string_view name = part.substr(0, part.find('/'));
        if (name == "..") {
            while (result.size() > root && result.back() == '/')
                result.pop_back();
            const bool hasName = result.size() > root;
            while (result.size() > root && result.back() != '/')
                result.pop_back();
            if (hasName || result.starts_with('/'))
                continue;
        } else if (name == ".") {
            continue;
        }
        result += part;
        if (name == "..")
            root = result.size();
    }
    // A final dot leaves a separator that the text did not have.
    if (!path.ends_with('/') && result.size() > 1 && result.ends_with('/'))
        result.pop_back();
    path = result.empty() ? "." : std::move(result);
}

// The invariant of the walk: `rest` is what remains of the text, relative to m_folder, and does not
// begin with a slash once a folder is open. Each step opens the longest prefix that one call takes.
NativePath::NativePath(const std::string& path)
    : m_text(path.substr(0, path.find('\0'))), m_name(m_text.data()), m_noFolder(AT_FDCWD)
{
    toSlashes(m_text);
    resolveDots(m_text);
    m_name = m_text.data();
    char* rest = m_text.data();
    char* const end = rest + m_text.size();
    while (end - rest >= PATH_MAX) {
        char* const slash = static_cast<char*>(::memrchr(rest + 1, '/', PATH_MAX - 2));
        if (slash == nullptr)
            break;
        *slash = '\0';
        m_name = rest;
        FileDescriptor next = open(O_PATH | O_DIRECTORY);
        *slash = '/';
        if (!next.valid())
            m_noFolder = -1;
        m_folder = std::move(next);
        rest = slash;
        while (*rest == '/')
            ++rest;
        m_name = rest;
        if (!m_folder.valid())
            return;
    }
    m_name = rest;
}

ErrorCode NativePath::error(int cause) const
{
    if (cause == EBADF || (cause == ENOENT && !hasParent()))
        return PathNotFound;
    return errorCode(cause);
}

std::string NativePath::lastName() const
{
    std::string name(m_name);
    while (name.size() > 1 && name.back() == '/')
        name.pop_back();
    return name.substr(name.rfind('/') + 1);
}

// Ends with a slash; empty for a name in the folder itself.
std::string NativePath::parentName() const
{
    std::string parent(m_name);
    while (!parent.empty() && parent.back() == '/')
        parent.pop_back();
    parent.resize(parent.rfind('/') + 1);
    return parent;
}

// Asked only after a failure, so its cost does not matter.
bool NativePath::hasParent() const
{
    const std::string parent = parentName();
    struct stat status = {};
    return parent.empty() ? !lastName().empty()
                          : ::fstatat(folder(), parent.c_str(), &status, 0) == 0;
}

bool NativePath::isSameName(const NativePath& other) const
{
    if (lastName() != other.lastName())
        return false;
    const auto lookUp = [](const NativePath& path, struct stat& status) {
        const std::string parent = path.parentName();
        return ::fstatat(path.folder(), parent.empty() ? "." : parent.c_str(), &status, 0) == 0;
    };
    struct stat own = {};
    struct stat others = {};
    return lookUp(*this, own) && lookUp(other, others) && own.st_dev == others.st_dev &&
           own.st_ino == others.st_ino;
}

int NativePath::status(struct stat& result) const
{
    return ::fstatat(folder(), m_name, &result, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

FileDescriptor NativePath::open(int flags, unsigned mode) const
{
    return FileDescriptor(::openat(folder(), m_name, flags | O_CLOEXEC, mode));
}

}
