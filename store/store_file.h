#pragma once

#include <string>

#include <sys/types.h>

// The files of a settings store, made with exactly the rights that they shall have.
namespace Tools::Store {

// Opens for reading and writing, and makes the file if it is missing; -1 on failure.
int openStoreFile(const std::string& path, mode_t mode);

// Makes a new, empty file beside `path` under a name that nobody else uses. Empty on failure.
std::string makeStoreFileBeside(const std::string& path, mode_t mode);

// Makes a directory and all above it that are missing; only the last one gets `mode`, those above
// belong to their user alone.
bool makeStoreDirectory(const std::string& path, mode_t mode);

}
