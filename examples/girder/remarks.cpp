#include "remarks.h"

namespace Girder {

void Remarks::error(const std::string& entry, const std::string& text)
{
    m_lines.push_back(m_file + ": " + (entry.empty() ? "" : entry + ": ") + text);
}

}
