#include "mail.h"

#include <mdtools/mail_process.h>

namespace Girder {

std::string send(const Mail& mail)
{
    std::vector<std::string> values = mail.receivers;
    values.insert(values.end(), {mail.sender, mail.host, mail.subject, mail.textFile});
    for (const std::string& value : values) {
        if (value.find('"') != std::string::npos || value.ends_with('\\'))
            return "cannot be handed to the mailer: " + value;
    }
    Tools::MailProcess mailer;
    for (const std::string& receiver : mail.receivers)
        mailer.addReceiver(receiver);
    mailer.setSender(mail.sender);
    if (!mail.host.empty())
        mailer.setSmtpHost(mail.host);
    mailer.setSubject(mail.subject);
    mailer.setMessageFileName(mail.textFile);
    mailer.enableWait(true);
    if (!mailer.run())
        return "the mailer \"postie\" cannot be started";
    if (mailer.returnCode() != 0)
        return "the mailer failed with exit code " + std::to_string(mailer.returnCode());
    return "";
}

std::string toSubject(std::string text)
{
    for (char& c : text) {
        if (c == '"')
            c = '\'';
        else if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    }
    while (text.ends_with('\\'))
        text.pop_back();
    return text;
}

}
