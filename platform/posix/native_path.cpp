#include "platform/posix/native_path.h"

#include "platform/codepage.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <fcntl.h>
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

// The invariant of the walk: `rest` is what remains of the text, relative to m_folder, and does not
// begin with a slash once a folder is open. Each step opens the longest prefix that one call takes.
NativePath::NativePath(const std::string& path)
    : m_text(path.substr(0, path.find('\0'))), m_name(m_text.data()), m_noFolder(AT_FDCWD)
{
    toSlashes(m_text);
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

// Asked only after a failure, so its cost does not matter.
bool NativePath::hasParent() const
{
    std::string parent(m_name);
    while (!parent.empty() && parent.back() == '/')
        parent.pop_back();
    const std::size_t slash = parent.rfind('/');
    if (slash == std::string::npos)
        return !parent.empty();
    parent.resize(slash + 1);
    struct stat status = {};
    return ::fstatat(folder(), parent.c_str(), &status, 0) == 0;
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
