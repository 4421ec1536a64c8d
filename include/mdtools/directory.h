#pragma once

#include <mdtools/export.h>
#include <mdtools/path.h>

#include <memory>
#include <string>
#include <vector>

namespace Tools {

// Operations on directories, and, as an object, one search in a directory. Names take either kind
// of slash; "." and ".." are taken out of the text, as File does. A failure is the result, never an
// exception. Symbolic links and junctions are copied and removed themselves and never entered. Any
// thread may call the static operations, but the current directory belongs to the whole process; an
// object serves one thread at a time.
class MDTOOLS_API Directory {
public:
    Directory();
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    // Ends an open search.
    ~Directory();

    // False for null, for files, and where nothing exists.
    static bool exists(const std::string& name);
    static bool exists(const Path& name);
    static bool exists(const char* name);

    // True without doing anything if the name exists already, even as a file. The parent must
    // exist.
    static bool create(const std::string& name);
    // Makes every missing level. True if the directory is there in the end; a file in the way is
    // not one.
    static bool createRecursively(const std::string& name);

    // An empty directory, or the link to any.
    static bool remove(const std::string& name);
    // Removes the directory with all that is in it, write-protected files too. If something cannot
    // be removed the rest is removed nevertheless. A link that takes the directory's place
    // meanwhile is neither followed nor removed.
    static bool removeRecursively(const std::string& name);

    // Copies a tree into the new directory `target`; fails if that cannot be made or exists.
    // Patterns hold names with "*" and "?" and are compared without case. What matches an exclude
    // pattern is left out, a directory with all that is in it; other files are copied if one of the
    // include patterns matches or if there are none. A file that cannot be copied does not stop the
    // rest. A target inside the source is not copied into itself. True if everything was copied. A
    // directory that cannot be made is reported on the debug channel.
    static bool copy(const std::string& source, const std::string& target,
                     const std::vector<std::string>& includePatterns = {},
                     const std::vector<std::string>& excludePatterns = {});

    // In the system's own form.
    static std::string getCurrent();
    static bool setCurrent(const std::string& name);

    // Searches a directory for the names that match the last component of `pattern` ("*" and "?",
    // without case; "*.*" matches all), in the system's order and with "." and "..". `start` ends a
    // search that is under way and delivers the first name, `find` each further one; both return
    // false, and leave `name`, when there is none.
    bool start(const std::string& pattern, std::string& name);
    bool find(std::string& name);

private:
    struct Search;
    std::unique_ptr<Search> m_search;
};

}
