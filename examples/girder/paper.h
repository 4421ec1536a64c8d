#pragma once

#include <string>

namespace Girder {

// What the print tool is to print, and what its forms say about it.
struct PrintJob {
    std::string listing; // the file to print
    std::string parameterFile;
    std::string title;
    std::string description;
    std::string projectDirectory;
    std::string program;
};

// Hands the job to the print tool of the installed program family and waits until that has ended.
// What stopped it, or an empty text: whether the tool succeeds is not known here.
std::string print(const PrintJob& job);

}
