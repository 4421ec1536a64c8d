#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// A file path in parts. The location ("C:" or "//server/share"), the directory, the file and the
// extension are kept apart, so that one can be replaced without touching the rest. Text may come in
// with either kind of slash and is held with "/"; ask for path(true) where backslashes are wanted.
// The parts of a text are the same on every platform, and nothing is looked up on the disk, but for
// valid(). Text is in the process's code page. An object is a plain value: any number of threads
// may read one that nobody changes.
class MDTOOLS_API Path {
public:
    // The current directory.
    Path();
    Path(const std::string& text);

    const std::string& location() const { return m_location; }
    // Ends with "/" unless it is empty.
    const std::string& directory() const { return m_directory; }
    // Without the extension.
    const std::string& file() const { return m_file; }
    // Without the dot.
    const std::string& extension() const { return m_extension; }

    // Location, directory and file, then "." and the extension if there is one.
    const std::string& path() const { return m_path; }
    // The same with backslashes if `native` is true, else with slashes only.
    std::string path(bool native) const;
    operator std::string();
    operator std::string() const;

    // Equal means equal byte by byte in every part; the order is that of the bytes of path().
    bool operator==(const Path& other) const;
    bool operator<(const Path& other) const { return m_path < other.m_path; }

    // Splits `text` at the location, at the last slash, and at the last dot after that slash; so
    // ".." is the file "." with an empty extension. A text that begins with two slashes has a
    // location only if a slash follows the share's name. Empty text changes nothing.
    void setPath(const std::string& text);

    void setLocation(const std::string& location);
    // A missing "/" is added after a directory; an empty text removes it.
    void setDirectory(const std::string& directory);
    void setFile(const std::string& file);
    // "dat" and ".dat" are the same extension.
    void setExtension(const std::string& extension);

    // The file `prefix` followed by `number`, with the extension "tmp", in the system's directory
    // of temporary files. No file is made.
    void setTemporary(const std::string& prefix, int number);
    // The system's directory of temporary files.
    void setTemporaryPath();

    // Something exists under this name just now; the next call may answer differently.
    bool valid() const;

    // `text` with every backslash turned into a slash, or (`toSlash` false) the other way round. A
    // trail byte of a double-byte character is no backslash.
    static std::string convert(const std::string& text, bool toSlash);

protected:
    // Does the same with the whole path as path() gives it; the parts stay.
    void convert(bool toSlash);

private:
    void compose();

    std::string m_location;
    std::string m_directory;
    std::string m_file;
    std::string m_extension;
    std::string m_path;
};

// Appends a backslash unless `path` is empty or ends with a slash of either kind.
MDTOOLS_API void addBackslashIfNecessary(std::string& path);

// Removes the last component of a path; what is left ends with a backslash, or is empty if no
// backslash is left. Only backslashes count, and one at the end of `path` belongs to the component:
// "C:\a\b" and "C:\a\b\" both become "C:\a\".
MDTOOLS_API void goUp(std::string& path);

}
