#pragma once

struct stat;

// file_access.h - who may use a file just now: its locks, which stand in for the sharing modes of
// Windows, and its write protection.
namespace Tools::Platform {

// An open file description's own lock, so that two openings in one process count as two. Any number
// hold a shared lock, for reading; one alone an exclusive lock, for writing.
enum class FileLock { Shared, Exclusive };

// Another opening of the file holds a lock beside which this one cannot be had.
bool isLockedAgainst(int file, FileLock lock);
// Takes a lock for as long as the file is open; false if another one is in the way. File systems
// without locks keep nobody out.
bool lockFile(int file, FileLock lock);

// Neither its permissions nor the user's rights let the entry be written. The permissions alone
// count for the system's administrator, too, as the read-only flag of a file does on Windows.
bool isWriteProtected(int folder, const char* name, const struct stat& status);

}
