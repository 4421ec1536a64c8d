#include "program.h"

#include "listing.h"
#include "model_file.h"
#include "result_file.h"
#include "settings.h"
#include "trace.h"

#include <mdtools/debug_output.h>

#include <exception>

namespace Girder {

namespace {

constexpr const char* Usage = "usage: girder [MODEL] [--result FILE]   compute a girder\n"
                              "       girder settings                  show the settings\n"
                              "       girder set NAME VALUE            change a setting\n"
                              "Without MODEL the last one is computed again.\n";

struct ComputeArguments {
    std::string model;
    std::string result;
};

class Program {
public:
    Program(std::ostream& out, std::ostream& errors) : m_out(out), m_errors(errors) {}

    Outcome run(const std::vector<std::string>& arguments);

private:
    Outcome wrongUsage(const std::string& text);
    Outcome fail(const std::string& file, const std::string& text);
    Outcome showSettings();
    Outcome changeSetting(const std::string& name, const std::string& value);
    Outcome compute(const std::vector<std::string>& arguments);
    Outcome compute(const ComputeArguments& arguments);
    Outcome finish(const ComputeArguments& arguments, const Results& results);

    std::ostream& m_out;
    std::ostream& m_errors;
    Settings m_settings;
};

Outcome Program::run(const std::vector<std::string>& arguments)
{
    const std::string command = arguments.empty() ? "" : arguments.front();
    if (command == "settings") {
        return arguments.size() == 1 ? showSettings()
                                     : wrongUsage("\"settings\" takes no arguments");
    }
    if (command == "set") {
        return arguments.size() == 3 ? changeSetting(arguments[1], arguments[2])
                                     : wrongUsage("\"set\" takes a name and a value");
    }
    return compute(arguments);
}

Outcome Program::wrongUsage(const std::string& text)
{
    m_errors << "girder: " << text << '\n' << Usage;
    return Outcome::WrongUsage;
}

Outcome Program::fail(const std::string& file, const std::string& text)
{
    m_errors << file << ": " << text << '\n';
    return Outcome::Failed;
}

Outcome Program::showSettings()
{
    for (const std::string& line : m_settings.list())
        m_out << line << '\n';
    return Outcome::Done;
}

Outcome Program::changeSetting(const std::string& name, const std::string& value)
{
    const std::string problem = m_settings.set(name, value);
    if (problem.empty())
        return Outcome::Done;
    m_errors << "girder: " << problem << '\n';
    return Outcome::WrongUsage;
}

Outcome Program::compute(const std::vector<std::string>& arguments)
{
    ComputeArguments parsed;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--result") {
            if (++i == arguments.size() || arguments[i].empty())
                return wrongUsage("\"--result\" needs a file");
            parsed.result = arguments[i];
        } else if (argument.starts_with("--")) {
            return wrongUsage("there is no option \"" + argument + "\"");
        } else if (!parsed.model.empty()) {
            return wrongUsage("one model at a time");
        } else {
            parsed.model = argument;
        }
    }
    if (parsed.model.empty())
        parsed.model = m_settings.lastModel();
    if (parsed.model.empty())
        return wrongUsage("a model is missing");
    if (parsed.result.empty())
        parsed.result = parsed.model + ".result";
    return compute(parsed);
}

Outcome Program::compute(const ComputeArguments& arguments)
{
    Tools::debugPrintf("girder: reading %s\n", arguments.model.c_str());
    Remarks remarks(arguments.model);
    const Model model = readModel(arguments.model, remarks);
    for (const std::string& line : remarks.lines())
        m_errors << line << '\n';
    if (remarks.hasError())
        return Outcome::Failed;
    m_settings.setLastModel(arguments.model);

    const int stations = model.stations > 0 ? model.stations : m_settings.stationsPerSpan();
    Tools::debugPrintfLabel(TraceLabel, "girder: %d spans, %d stations in each\n",
                            static_cast<int>(model.spans.size()), stations);
    const Results results = computeResults(model, stations);
    if (!results.isFinite())
        return fail(arguments.model, "some number is too large or too small to compute with");
    for (const SupportResult& support : results.supports) {
        Tools::debugPrintfLabel(TraceLabel, "girder: support at %.3f m: %.3f kN, %.3f kNm\n",
                                support.x, support.reaction, support.moment);
    }
    return finish(arguments, results);
}

Outcome Program::finish(const ComputeArguments& arguments, const Results& results)
{
    printListing(results, m_settings.numberFormat(), m_out);
    if (!writeResults(results, arguments.result))
        return fail(arguments.result, "cannot be written");
    m_out << "\nResults: " << arguments.result << '\n';
    Tools::debugPrintf("girder: results in %s\n", arguments.result.c_str());
    return Outcome::Done;
}

}

Outcome run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors)
{
    try {
        return Program(out, errors).run(arguments);
    } catch (const std::exception& exception) {
        errors << "girder: " << exception.what() << '\n';
        return Outcome::Failed;
    }
}

}
