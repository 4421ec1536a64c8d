#pragma once

#include "platform/posix/file_descriptor.h"

#include <cstddef>

struct stat;

// file_copy.h - what copies of files and links are made of. Functions return 0 or the cause.
namespace Tools::Platform {

// A single name in an open directory.
struct FolderEntry {
    int folder;
    const char* name;
};

// Copies contents, permissions and modification time into an empty file that was just opened as
// `entry`, closes it, and removes it again if any of that fails.
int copyInto(const FileDescriptor& source, const struct stat& sourceStatus, FileDescriptor target,
             const struct stat& targetStatus, FolderEntry entry);
// Makes a link with the same text as another one.
int copyLink(FolderEntry source, FolderEntry target);
// Writes all of the bytes; `written` is what got there.
int writeAll(int target, const char* bytes, std::size_t size);
int writeAll(int target, const char* bytes, std::size_t size, std::size_t& written);
// The same, to a file that may be a pipe: one that nobody reads is a failure and raises no signal.
int writeToPipe(int target, const char* bytes, std::size_t size, std::size_t& written);

}
