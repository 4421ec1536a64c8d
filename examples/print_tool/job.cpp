#include "job.h"

#include <pugixml.hpp>

#include <stdexcept>

namespace PrintTool {

namespace {

// The parameter file names each byte by its number, which the XML reader takes for a character and
// gives in UTF-8: two bytes for those above 127.
std::string toBytes(const char* utf8)
{
    std::string bytes;
    for (const char* p = utf8; *p != '\0'; ++p) {
        const unsigned lead = static_cast<unsigned char>(*p);
        if (lead < 0x80) {
            bytes += *p;
        } else if (lead < 0xE0 && p[1] != '\0') {
            ++p;
            bytes += static_cast<char>(lead << 6 | (static_cast<unsigned char>(*p) & 0x3F));
        } else {
            bytes += '?';
        }
    }
    return bytes;
}

bool isYes(const pugi::xml_node& options, const char* name)
{
    return std::string(options.attribute(name).value()) == "yes";
}

}

Job readJob(const std::string& parameterFile)
{
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_file(parameterFile.c_str());
    if (!result)
        throw std::runtime_error(parameterFile + ", byte " + std::to_string(result.offset) + ": " +
                                 result.description());
    const pugi::xml_node root = document.child("MDPrintParameter");
    if (!root)
        throw std::runtime_error(parameterFile + ": no \"MDPrintParameter\" in it");

    Job job;
    for (const pugi::xml_node& file : root.child("Eingabedateien").children())
        job.files.push_back(toBytes(file.child_value("Dateiname")));
    for (const pugi::xml_node& placeholder : root.child("PlatzhalterListe").children())
        job.placeholders.emplace_back(toBytes(placeholder.child_value("Name")),
                                      toBytes(placeholder.child_value("Inhalt")));
    const pugi::xml_node options = root.child("Optionen");
    job.oemFiles = std::string(options.attribute("Charset").value()) == "oem";
    job.deleteFiles = isYes(options, "Eingabedateienloeschen");
    job.deleteParameterFile = isYes(options, "XMLDateiloeschen");
    return job;
}

}
