#pragma once

#include <string>

// Texts of the family's programs by number, in the user's language and the process's code page. An
// unknown number gives an empty text. All may be called from any thread.

// Texts of documents and dialogs.
class MdTextResource {
public:
    static MdTextResource* get();
    std::string loadString(unsigned int id) const;
};

// Texts of the user interface.
class MdText {
public:
    static std::string LoadGui(unsigned int id);
};
