#pragma once

#include <string>
#include <vector>

namespace Girder {

struct Mail {
    std::vector<std::string> receivers;
    std::string sender;
    std::string host; // empty: the one that the library was built with
    std::string subject;
    std::string textFile;
};

// Sends the mail through the mailer on the search path and waits until that has ended. What went
// wrong, or an empty text.
std::string send(const Mail& mail);

// `text` as a subject: on one line, and without what the mailer's command line cannot carry.
std::string toSubject(std::string text);

}
