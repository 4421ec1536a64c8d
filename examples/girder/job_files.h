#pragma once

#include <string>

namespace Girder {

// The directory where the program keeps its files, made if it is missing: `configured`, or a
// directory of its own in the user's one. Empty if there is none.
std::string workDirectory(const std::string& configured);

// `name` in `directory`, with that directory's kind of slash; the name alone if that is empty.
std::string joinPath(const std::string& directory, const std::string& name);

// The directory of `file`, valid whatever the current directory is.
std::string directoryOf(const std::string& file);

// A file of the program for this model: named like it, in `directory`, or beside the model if that
// is empty. Never the model itself.
std::string fileFor(const std::string& model, const std::string& directory,
                    const std::string& extension);

// A relative path as one that holds in every directory.
std::string absolutePath(const std::string& file);

// The files of one computed model.
struct JobFiles {
    std::string model;
    std::string results; // as a record
    std::string text;    // the same as labelled text, beside it

    // Named like the model, in `directory`; `results` goes before that if it is not empty.
    JobFiles(const std::string& model, const std::string& results, const std::string& directory,
             const std::string& extension = "result");

    // Copies them into a new folder in `directory`, named like the model, followed by a number if
    // there is such a folder already. Its path, or empty if something could not be copied.
    std::string archiveIn(const std::string& directory) const;
};

}
