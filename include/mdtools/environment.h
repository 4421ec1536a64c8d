#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// One variable of the process's environment, which child processes inherit. The value is read once,
// at construction, and written through by setValue().
//
// Any thread may make objects and set values, also of the same variable: the library's own accesses
// to the environment exclude each other. Those that the program makes past the library
// (std::getenv, setenv) do not; on Linux they must not happen while another thread sets a value. On
// Windows std::getenv looks into a copy of its own, which the run-time library made when the
// program began: it does not see what this class has set. (putenv changes both.) An object belongs
// to one thread at a time.
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
