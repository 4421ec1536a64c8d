#include <mdtools/environment.h>

#include "platform/environment.h"

namespace Tools {

Environment::Environment(const std::string& name) : m_name(name)
{
    if (!name.empty())
        Platform::readVariable(name, m_value);
}

Environment::~Environment() = default;

void Environment::setValue(const std::string& text)
{
    if (text.empty())
        return;
    m_value = text;
    Platform::setVariable(m_name, text);
}

}
