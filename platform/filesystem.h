#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// Single files and directories by their path. Paths come in the library's form, with either kind of
// slash, and may be longer than one call of the system takes wherever the system offers a way.
namespace Tools::Platform {

// The Windows number of a failure's cause, on every platform; 0 is success.
using ErrorCode = std::uint32_t;

// What a name leads to. A link is what its target is; one without a target is a FileLink.
enum class EntryType { None, File, Directory, FileLink, DirectoryLink };

// What the system itself puts between the names of a path.
char separator();

// Looks at the name itself, not through a link.
EntryType entryType(const std::string& path);
// A link to a directory is one.
bool isDirectory(const std::string& path);

ErrorCode createDirectory(const std::string& path);
// Every missing level from the root down.
ErrorCode createDirectories(const std::string& path);
// An empty directory; for links there is removeLink().
ErrorCode removeDirectory(const std::string& path);
std::string currentDirectory();
bool setCurrentDirectory(const std::string& path);

// Removes a file or the link to one, unless it is write-protected.
ErrorCode removeFile(const std::string& path);
// Removes the link itself, of either type.
ErrorCode removeLink(const std::string& path, EntryType type);
// Overwrites a file that is not write-protected; permissions and modification time are the
// source's. What is left of a copy that fails is removed.
ErrorCode copyFile(const std::string& source, const std::string& target);
// Never overwrites. A file, but not a directory, is moved to another file system too.
ErrorCode renameEntry(const std::string& oldPath, const std::string& newPath);
// Gives a file the name of another one, which is gone then, in one step: whoever opens that name
// finds the old file or the new one. Within a file system only.
ErrorCode replaceFile(const std::string& source, const std::string& target);

// `mode` is one of the C run-time's: "r", "w" or "a", then any of "+", "b" or "t", and "x" after
// "w". Opens as the run-time does, but not inheritable, and as long as others hold it open refuses
// to write and as long as another writes refuses everything. Null if it failed.
std::FILE* openStream(const std::string& path, const std::string& mode);

// An existing entry that cannot be had for reading and writing by one alone.
bool isLocked(const std::string& path);

}
