#pragma once

#include <mdtools/export.h>
#include <mdtools/process.h>

#include <string>
#include <vector>

namespace Tools {

// Sends one mail through the command-line mailer "postie", which must be on the program search
// path. Only its start is reported; whether the mail arrives is not seen here. Values are put
// between double quotes as they are: they must hold none themselves. One object belongs to one
// thread at a time.
class MDTOOLS_API MailProcess : public Process {
public:
    // Sender, subject and message file are empty, there is no receiver, and the host is the one
    // that the library was built with (MDTOOLS_SMTP_HOST, "localhost" by default).
    MailProcess();
    virtual ~MailProcess();

    // "CMailProcess".
    virtual std::string getName() const;

    void setSender(const std::string& sender);
    void setSmtpHost(const std::string& host);
    void setSubject(const std::string& subject);
    // A text file whose content is the mail's body; empty for a mail without one.
    void setMessageFileName(const std::string& file);
    // Receivers are kept in order, duplicates too.
    void addReceiver(const std::string& receiver);

    // Builds the command line and runs it as Process::run() does, with all that is set there: only
    // after enableWait() does it wait for the mailer, whose exit code returnCode() gives then. The
    // message file must stay until the mailer has read it. False, and nothing started, if there is
    // no receiver; false, too, if the mailer could not be started. It hides Process::run(), which
    // by a reference to Process runs whatever command line was set last.
    bool run();

private:
    std::string composeCommandLine() const;

    std::string m_sender;
    std::string m_smtpHost;
    std::vector<std::string> m_receivers;
    std::string m_subject;
    std::string m_messageFileName;
};

}
