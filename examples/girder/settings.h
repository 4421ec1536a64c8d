#pragma once

#include "number_text.h"

#include <string>
#include <vector>

namespace Girder {

// The program's settings of the current user. Each read looks at the stored value, and gives the
// default when there is none or when it is out of range. One thread at a time.
class Settings {
public:
    Settings();

    int stationsPerSpan() const;
    // Where the program keeps its files; empty: in the user's directory.
    std::string directory() const;
    NumberFormat numberFormat() const;
    // Empty if no model was computed yet.
    std::string lastModel() const;
    void setLastModel(const std::string& file);

    // What mails are sent with; the host is empty where the library's own one is to be taken.
    // Sender and receivers are the user of this machine if nothing is stored.
    std::string mailHost() const;
    std::string mailSender() const;
    std::vector<std::string> mailReceivers() const;

    // For the command line: "name = value" for every setting.
    std::vector<std::string> list() const;
    // An empty text if the setting was stored, else what is wrong with name or value. Names and
    // words are compared without case. Throws std::runtime_error if nothing can be stored.
    std::string set(const std::string& name, const std::string& value);
};

}
