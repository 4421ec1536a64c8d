#pragma once

#include "platform/filesystem.h"
#include "platform/posix/file_descriptor.h"

#include <string>

struct stat;

// native_path.h - the translation of paths, and of the causes why one leads nowhere.
namespace Tools::Platform {

// The Windows number for a cause named by errno. A missing name counts as a missing file.
ErrorCode errorCode(int cause);

// Turns the backslashes of a path into slashes, but not the second bytes of double-byte characters.
void toSlashes(std::string& path);

// Takes the names "." and ".." out of a path with slashes, by its text alone as Windows does: the
// name before ".." need not exist, and if it is a link it is not followed. Those at the start of a
// relative path stay, ".." above the root is the root, and an empty rest is ".".
void resolveDots(std::string& path);

// A path as the calls with a directory descriptor take it, without "." and "..". A text too long
// for one call is walked in pieces to a directory near its end.
class NativePath {
public:
    explicit NativePath(const std::string& path);

    int folder() const { return m_folder.valid() ? m_folder.get() : m_noFolder; }
    const char* name() const { return m_name; }

    // As errorCode(), but a name missing because its directory is missing has a number of its own.
    ErrorCode error(int cause) const;

    // The status of the entry itself, not of a link's target; 0 or the cause.
    int status(struct stat& result) const;
    // Both are the same name in the same directory, however the way there is written.
    bool isSameName(const NativePath& other) const;
    // Never inherited by child processes.
    FileDescriptor open(int flags, unsigned mode = 0) const;

private:
    bool hasParent() const;
    std::string lastName() const;
    std::string parentName() const;

    std::string m_text;
    const char* m_name;
    FileDescriptor m_folder;
    int m_noFolder;
};

}
