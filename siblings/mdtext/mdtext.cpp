#include <mdtext/mdtext.h>

#include <algorithm>
#include <iterator>

namespace {

struct Entry {
    unsigned int id;
    const char* text;
};

// In ascending order of the numbers. A text that a name follows ends with a blank.
constexpr Entry Entries[] = {
    {3095, "Author"},
    {6627, "Project name"},
    {6628, "Project description"},
    {6629, "Project directory"},
    {7037, "The system is out of memory or resources."},
    {7041, "File not found: "},
    {7042, "Path not found."},
    {7043, "Access denied: "},
    {7044, "Not enough memory."},
    {7045, "Invalid program file."},
    {7046, "Sharing violation."},
    {7047, "The file association is incomplete."},
    {7048, "The request timed out."},
    {7049, "The request failed."},
    {7050, "The system is busy with other requests."},
    {7051, "No program is associated with this file type."},
    {7052, "A required library was not found."},
    {7053, "Success."},
    {7054, "Unknown error."},
};

std::string findText(unsigned int id)
{
    const Entry* found =
        std::lower_bound(std::begin(Entries), std::end(Entries), id,
                         [](const Entry& entry, unsigned int value) { return entry.id < value; });
    return found != std::end(Entries) && found->id == id ? found->text : "";
}

}

MdTextResource* MdTextResource::get()
{
    static MdTextResource resource;
    return &resource;
}

std::string MdTextResource::loadString(unsigned int id) const
{
    return findText(id);
}

std::string MdText::LoadGui(unsigned int id)
{
    return findText(id);
}
