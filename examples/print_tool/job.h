#pragma once

#include <string>
#include <utility>
#include <vector>

namespace PrintTool {

// What a parameter file asks for. Texts are bytes of the Windows code page 1252.
struct Job {
    std::vector<std::string> files;
    std::vector<std::pair<std::string, std::string>> placeholders;
    // The files are in the code page of the old consoles (437).
    bool oemFiles = false;
    bool deleteFiles = false;
    bool deleteParameterFile = false;
};

// Throws std::runtime_error, naming file and position, where the file cannot be read or is none.
Job readJob(const std::string& parameterFile);

}
