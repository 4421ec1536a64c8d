#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// One variable of the process's environment, which child processes inherit. The value is read once,
// at construction, and written through by setValue().
class MDTOOLS_API Environment {
public:
    // The value is empty if the name is, or if the variable is not set.
    explicit Environment(const std::string& name);
    Environment(const Environment& other) = default;
    Environment(Environment&& other) = default;
    Environment& operator=(const Environment& other) = default;
    Environment& operator=(Environment&& other) = default;
    virtual ~Environment();

    std::string getName() const { return m_name; }
    std::string getValue() const { return m_value; }

    // Keeps the text and sets the process's variable. An empty text changes nothing: this class
    // never clears a variable.
    void setValue(const std::string& text);

private:
    std::string m_name;
    std::string m_value;
};

}
