#include "remarks.h"

#include <mdtools/strings.h>

namespace Girder {

void Remarks::info(const std::string& entry, const std::string& text)
{
    record(Tools::Record::Info, entry, "note: " + text);
}

void Remarks::warning(const std::string& entry, const std::string& text)
{
    record(Tools::Record::Warning, entry, "warning: " + text);
}

void Remarks::error(const std::string& entry, const std::string& text)
{
    record(Tools::Record::Error, entry, text);
}

// Words of the file are quoted in remarks, and may hold line breaks.
void Remarks::record(Tools::Record::Level level, const std::string& entry, const std::string& text)
{
    const std::string prefix = m_file + ": " + (entry.empty() ? "" : entry + ": ");
    m_recorder.record(Tools::Record(level, Tools::replaceAny(prefix + text, "\n\r\t", ' ')));
}

std::vector<std::string> Remarks::lines() const
{
    std::vector<std::string> lines;
    for (const Tools::Record& record : m_recorder.getRecords())
        lines.push_back(record.getText());
    return lines;
}

}
