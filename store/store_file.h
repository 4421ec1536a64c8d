#pragma once

#include "platform/posix/file_descriptor.h"

#include <cstdint>
#include <string>

#include <sys/types.h>

// The files of a settings store, opened and made with exactly the rights that they shall have. A
// link is never followed to a file: in the folder of another user it might lead anywhere. What is
// opened for writing is a plain file of the caller or, above all for root, of the folder's owner.
namespace Tools::Store {

using Platform::FileDescriptor;

// Distinguishes a file from another one of the same name; zeros without a file.
struct FileId {
    bool operator==(const FileId& other) const = default;

    dev_t device = 0;
    ino_t inode = 0;
    // When it was made, where the file system knows: numbers of removed files are used again.
    std::int64_t born = 0;
};
FileId fileId(const std::string& path);

// Of a file that is there. errno is ELOOP for a link and EPERM for a file that is not to be
// trusted.
FileDescriptor openForReading(const std::string& path);
FileDescriptor openForWriting(const std::string& path);

// Makes the file beside `model` and with its owner and rights if it is missing.
FileDescriptor openOrMakeLike(const std::string& path, const std::string& model);

// Puts a new file with these bytes under a name; false, and nothing is left over, if that fails;
// errno is EEXIST if somebody was faster.
bool makeStoreFile(const std::string& path, mode_t mode, const void* bytes, std::size_t size);

// Makes a directory and all above it that are missing; only the last one gets `mode`, those above
// belong to their user alone.
bool makeStoreDirectory(const std::string& path, mode_t mode);

// Writes all of it, or fails with errno.
bool writeAt(int file, const void* bytes, std::size_t size, off_t position);

}
