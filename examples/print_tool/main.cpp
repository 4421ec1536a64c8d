// A stand-in for the family's print tool: mdprint @PARAMETERFILE prints the job's files, kind after
// kind, into a PDF beside the parameter file (job.xml: job.pdf) instead of onto paper.

#include "document.h"
#include "job.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace PrintTool;

// The letters of code page 437 that listings use, as code page 1252 has them; its frames become
// plain characters.
char fromOem(char c)
{
    static const struct {
        unsigned char oem, windows;
    } table[] = {{0x84, 0xE4}, {0x94, 0xF6}, {0x81, 0xFC}, {0x8E, 0xC4}, {0x99, 0xD6}, {0x9A, 0xDC},
                 {0xE1, 0xDF}, {0xFD, 0xB2}, {0xF8, 0xB0}, {0xE6, 0xB5}, {0xF1, 0xB1}, {0xC4, '-'},
                 {0xB3, '|'},  {0xC5, '+'},  {0xCD, '='},  {0xBA, '|'}};
    const auto value = static_cast<unsigned char>(c);
    for (const auto& row : table) {
        if (row.oem == value)
            return static_cast<char>(row.windows);
    }
    return value < 0x80 ? c : '?';
}

void printFile(Document& document, const std::string& name, bool oem)
{
    std::ifstream stream(name, std::ios::binary);
    if (!stream)
        throw std::runtime_error(name + ": cannot be read");
    // Tables stay whole: what is between empty lines or form feeds is a block.
    std::vector<std::string> block;
    const auto endBlock = [&] {
        document.addBlock(block);
        block.clear();
    };
    for (std::string line; std::getline(stream, line);) {
        for (char& c : line)
            c = oem ? fromOem(c) : c;
        if (line.empty() || line == "\r")
            endBlock();
        for (std::size_t feed; (feed = line.find('\f')) != std::string::npos;) {
            if (feed > 0)
                block.push_back(line.substr(0, feed));
            endBlock();
            document.startPage();
            line.erase(0, feed + 1);
        }
        block.push_back(line);
    }
    endBlock();
}

std::string headingOf(const Job& job)
{
    for (const auto& [name, content] : job.placeholders) {
        if (name == "Project name")
            return content;
    }
    return "Listing";
}

void print(const std::string& parameterFile)
{
    const Job job = readJob(parameterFile);
    Document document;
    document.startPage();
    document.addHeading(headingOf(job));
    for (const auto& [name, content] : job.placeholders)
        document.addLine(std::string(name).append(": ").append(content));
    document.addLine("");
    for (const std::string& file : job.files)
        printFile(document, file, job.oemFiles);
    const std::string output =
        std::filesystem::path(parameterFile).replace_extension(".pdf").string();
    document.save(output);
    std::cout << "printed: " << output << '\n';

    if (job.deleteFiles) {
        for (const std::string& file : job.files)
            std::remove(file.c_str());
    }
    if (job.deleteParameterFile)
        std::remove(parameterFile.c_str());
}

}

int main(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] != '@' || argv[1][1] == '\0') {
        std::cerr << "usage: mdprint @PARAMETERFILE\n";
        return 2;
    }
    try {
        print(argv[1] + 1);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "mdprint: " << error.what() << '\n';
        return 1;
    }
}
