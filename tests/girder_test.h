#pragma once

// What the tests of the girder program share.
#include "../examples/girder/program.h"
#include "support/files.h"
#include "support/test_environment.h"

#include <mdtools/path.h>
#include <mdtools/registry.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace GirderTest {

using Girder::Outcome;

inline std::string inWorkDirectory(const std::string& name)
{
    return Tools::Path::convert(MdToolsTest::workDirectory(), true) + "/" + name;
}

inline std::string write(const std::string& name, const std::string& text)
{
    const std::string file = inWorkDirectory(name);
    MdToolsTest::writeFile(file, text);
    return file;
}

struct RunResult {
    Outcome outcome;
    std::string output;
    std::string errors;
};

inline RunResult runWith(const std::vector<std::string>& arguments, const std::string& input = "")
{
    std::istringstream lines(input);
    std::ostringstream output, errors;
    const Outcome outcome = Girder::run(arguments, {lines, output, errors});
    return {outcome, output.str(), errors.str()};
}

// Keeps the program's files in the work directory.
class GirderProgram : public ::testing::Test {
protected:
    GirderProgram() { runWith({"set", "Directory", inWorkDirectory("files")}); }
    // The next test finds the defaults again.
    ~GirderProgram() override
    {
        Tools::RegistryKey settings = Tools::Registry::find(
            Tools::Registry::CurrentUser, "SOFTWARE\\MERODA\\Girder\\Settings", true);
        std::vector<Tools::RegistryValue> values;
        for (Tools::RegistryValue::Iterator it(settings); it.valid(); ++it)
            values.push_back(*it);
        for (const Tools::RegistryValue& value : values)
            settings.remove(value);
        MdToolsTest::removeUserKey("SOFTWARE\\MERODA\\Girder");
    }
};

inline const std::string twoSpans =
    "( version = \"1.1\"\n"
    " title = \"Two\\\\ \\\"spans\\\"\" # comment\n"
    " spans = [\n"
    "  ( length = 8 stiffness = 2.1e4 load = 12.0 )\n"
    "  ( length = 8.0 stiffness = 21000 load = 12\n"
    "    pointLoads = [ ( position = 2.5 force = -1e1 ) ] ) ]\n"
    " supports = [ (kind=\"hinged\") (kind=\"interior\") (kind=\"fixed\") ]\n"
    ")\n";

inline std::string replaced(const std::string& from, const std::string& to)
{
    std::string text = twoSpans;
    const std::size_t position = text.find(from);
    EXPECT_NE(position, std::string::npos) << from;
    return text.replace(position, from.size(), to);
}

}
