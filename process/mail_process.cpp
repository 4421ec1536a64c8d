#include <mdtools/mail_process.h>

namespace Tools {

namespace {

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

}

MailProcess::MailProcess() : m_smtpHost(MDTOOLS_SMTP_HOST) {}

MailProcess::~MailProcess() = default;

std::string MailProcess::getName() const
{
    return "CMailProcess";
}

void MailProcess::setSender(const std::string& sender)
{
    m_sender = sender;
}

void MailProcess::setSmtpHost(const std::string& host)
{
    m_smtpHost = host;
}

void MailProcess::setSubject(const std::string& subject)
{
    m_subject = subject;
}

void MailProcess::setMessageFileName(const std::string& file)
{
    m_messageFileName = file;
}

void MailProcess::addReceiver(const std::string& receiver)
{
    m_receivers.push_back(receiver);
}

bool MailProcess::run()
{
    if (m_receivers.empty())
        return false;
    setCommandLine(composeCommandLine());
    return Process::run();
}

std::string MailProcess::composeCommandLine() const
{
    std::string line = "postie";
    line.append(" -host:").append(quoted(m_smtpHost));
    line.append(" -from:").append(quoted(m_sender)).append(" -to:");
    for (const std::string& receiver : m_receivers)
        line.append(&receiver == &m_receivers.front() ? "" : ",").append(quoted(receiver));
    line.append(" -s:").append(quoted(m_subject));
    if (m_messageFileName.empty())
        line.append(" -nomsg");
    else
        line.append(" -file:").append(quoted(m_messageFileName));
    return line;
}

}
