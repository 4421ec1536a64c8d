#pragma once

#include <mdtools/export.h>
#include <mdtools/path.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace Tools {

// Operations on whole files. Names take either kind of slash; where a Path is taken, its whole path
// counts, and a Path may be given for any name. The names "." and ".." are taken out of the text
// before the system sees it: "none/../f" is "f", whether there is a "none" or not. A failure is the
// result (false or null), never an exception. Files are read and written as bytes. Any thread may
// call.
//
// Searches compare names without case, also where the system tells cases apart. In a pattern "*"
// stands for any run of characters and "?" for exactly one; "*.*" matches every name. Where no
// pattern is asked for, wildcards are plain characters, and so they are in the name of a directory.
//
// Symbolic links and junctions are found, renamed and removed themselves, and no search or removal
// of a tree goes through one. Whatever looks at or changes contents uses what a link leads to.
//
// A file that this library holds open, as open(), FileOutput and FileLogger do, is in use: nobody
// can rename it, remove it by its name or by a pattern, copy over it or append to it. On Linux only
// this library minds that, in all programs, as well as locks of other programs on the first two
// bytes; Directory::removeRecursively() removes such a file there. A file without any write
// permission is write-protected on Linux, for the administrator, too.
class MDTOOLS_API File {
public:
    // One result of a search.
    class MDTOOLS_API Info {
    public:
        enum class Type { File, Directory };

        // An empty name of type File.
        Info();
        Info(const std::string& directory, const std::string& name, Type type);

        // The directory as the search was given it, without a final separator; below it joined by
        // the system's separator.
        const std::string& getDirectory() const { return m_directory; }
        const std::string& getName() const { return m_name; }
        Type getType() const { return m_type; }
        bool isDirectory() const { return m_type == Type::Directory; }

        bool operator==(const Info& other) const;
        // By directory, then name, then type, byte by byte.
        bool operator<(const Info& other) const;

    private:
        std::string m_directory;
        std::string m_name;
        Type m_type = Type::File;
    };

    // Opens as fopen does, with its modes, and sets the locale of the whole process to "C", so that
    // numbers in files have a decimal point wherever the user lives. Null if the name is empty (the
    // locale stays), the mode is none, or the system refuses. While a file is open for writing
    // nobody else can open it, and while it is open for reading nobody can write it; so a log that
    // is being written cannot be opened here at all. Child processes do not inherit the file.
    static std::FILE* open(const std::string& name, const std::string& mode);
    static std::FILE* open(const Path& name, const std::string& mode);
    // The result of fclose: 0, or EOF if the rest could not be written. 0 for null, too.
    static int close(std::FILE* file);

    // Also true for directories, and for links, whatever they lead to. False for null.
    static bool exists(const std::string& name);
    static bool exists(const Path& name);
    static bool exists(const char* name);

    // True for a file without a byte, and for whatever cannot be opened and read as a file: a
    // missing name, a directory, a file that somebody holds for himself.
    static bool isEmpty(const std::string& name);
    static bool isEmpty(const Path& name);

    // Same length and same bytes. False if one of them cannot be read.
    static bool isEqual(const std::string& a, const std::string& b);

    // The file exists, but cannot be opened for reading and writing by this program alone: it is
    // open elsewhere (on Linux: with a lock), may not be written, or is a directory.
    static bool isLocked(const std::string& name);

    // Overwrites the target, unless that is write-protected, open elsewhere or the source itself.
    // The last form joins the target from a directory and a file name. The copy has the source's
    // permissions and modification time. Nothing is left of a copy that fails. Of a link the copy
    // has what it leads to; a target that is a link stays one, and on Linux the file behind it is
    // replaced in one step, so that a copy that fails leaves both as they were. That takes the
    // right to make files in the directory of the file.
    static bool copy(const std::string& source, const std::string& target);
    static bool copy(const Path& source, const Path& target);
    static bool copy(const std::string& source, const std::string& directory,
                     const std::string& file);

    // Renames or moves a file or directory; never overwrites. The new name is a whole path,
    // relative to the current directory as any other, not to the old name's directory; another
    // spelling of the old name is one that it has already, and succeeds. A file goes to another
    // drive or file system as well.
    static bool rename(const std::string& oldName, const std::string& newName);
    static bool rename(const Path& oldName, const Path& newName);

    // A file that is not write-protected; not a directory.
    static bool remove(const std::string& name);
    static bool remove(const Path& name);

    // Removes the file of this name or, if the last component holds wildcards, every file that
    // matches it. Each of those that cannot be removed is reported on the debug channel. True if
    // none remains; so it is if none was there to match.
    static bool removeEx(const std::string& pattern);

    // Tries every file of the list; true if all of them were removed.
    static bool removeFiles(const std::vector<std::string>& names);

    // Removes the files, not the directories, that match; with `recursive` in all directories below
    // as well. True if none remains.
    static bool removeByWildCard(const std::string& directory, const std::string& pattern,
                                 bool recursive);

    // Removes the directory with all that is in it. A write-protected file remains, and with it the
    // directories above it; Directory::removeRecursively removes those, too.
    static bool removeDirectoryRecursively(const std::string& name);

    // Appends an entry for every file and directory that matches to `result`; with `recursive` for
    // those in all directories below as well. A directory's own entries come before those of its
    // subdirectories, each ordered by name without case. An empty `directory` is the current one.
    // Returns whether anything was found.
    static bool findByWildCard(const std::string& directory, const std::string& pattern,
                               std::vector<Info>& result, bool recursive);

    // Appends the bytes of `source` to `target`, which is made if it is missing. While one process
    // appends to a file another one is refused, and a file is not appended to itself: then nothing
    // happens. If the disk fills up or memory runs out, the target keeps what it held before.
    // True if all was appended.
    static bool concatenate(const std::string& source, const std::string& target);

    // Components as Path has them, with slashes: the directory with its location, without the final
    // slash unless it is a root; the text after the last dot of the name; the name before it.
    static std::string getDirectory(const std::string& name);
    static std::string getExtension(const std::string& name);
    static std::string getNameWithoutExtension(const std::string& name);

    // The characters that no file name holds: \ / : * ? " < > |
    static const std::array<char, 9>& getForbiddenChars();
};

}
