#pragma once

#include "platform/posix/native_path.h"

struct stat;

// file_access.h - who may use a file just now: its locks, which stand in for the sharing modes of
// Windows, and its write protection.
namespace Tools::Platform {

// What an opening of a file is for, and what it leaves to the others. Locks belong to the open file
// description, so that two openings in one process count as two. Those of other programs count,
// too, if they hold the first or the second byte; a database in use has its locks elsewhere.
enum class FileLock {
    // Reads; others may read. Any number hold it.
    Shared,
    // Appends; others may read and append, but not if they hold it for reading.
    Appending,
    // Writes; others may do nothing.
    Exclusive,
    // Takes the name away: nobody may have the file open.
    Removal
};

// Another opening of the file holds a lock beside which this one cannot be had.
bool isLockedAgainst(int file, FileLock lock);
// Takes a lock for as long as the file is open; false if another one is in the way. File systems
// without locks keep nobody out.
bool lockFile(int file, FileLock lock);

// Opens a file with a lock for as long as it is open; whatever is no plain file is opened without
// one. Not valid if a lock is in the way or if it is to be written and is write-protected. What is
// opened for writing has its name still, though somebody may be about to remove it.
FileDescriptor openLocked(const NativePath& path, int flags, FileLock lock, struct stat& status);

// Somebody has the plain file open. If nobody has, and if it may be written, it is kept for
// removal or renaming as long as `hold` lives.
bool isInUse(int folder, const char* name, FileDescriptor& hold);

// No permission lets anybody write. That counts for the system's administrator, too, as the
// read-only flag of a file does on Windows.
bool isWriteProtected(const struct stat& status);
// The same, or the user's rights do not let the entry be written.
bool isWriteProtected(int folder, const char* name, const struct stat& status);

}
