#include "record_text.h"

#include "fault_finder.h"
#include "file_text.h"

#include <mdtools/strings.h>

#include <limits>
#include <locale>
#include <sstream>

namespace Girder {

namespace {

using Tools::Smart::IstreamTokenIterator;
using Tools::Smart::Token;

bool isWholeRecord(const std::string& text, Tools::Smart::Record& record)
{
    std::istringstream stream(text);
    IstreamTokenIterator token(stream);
    record.readFrom(token);
    if (token.end() || (*token).getType() != Token::CloseParenthesis)
        return false;
    ++token;
    return token.end() && (*token).getType() == Token::CloseParenthesis;
}

}

bool readRecord(const std::string& text, Tools::Smart::Record& record, Remarks& remarks)
{
    try {
        if (isWholeRecord(text, record))
            return true;
    } catch (const Tools::Smart::WrongToken&) {
        // The exception says what was wrong, but not where.
    }
    const Fault fault = findFault(text);
    remarks.error(fault.entry, "line " + std::to_string(fault.line) + ": " + fault.text);
    return false;
}

bool writeRecord(const Tools::Smart::Record& record, const std::string& file)
{
    // The record flushes every line, which costs nothing here.
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(std::numeric_limits<double>::digits10);
    record.writeTo(text, 0, "  ");
    return writeFile(file, text.str());
}

void setText(Tools::Smart::Record& record, const std::string& name, const std::string& text)
{
    record.setText(name, Tools::replaceAll(text, "\\", "\\\\"), true);
}

}
