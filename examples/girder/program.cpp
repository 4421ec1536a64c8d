#include "program.h"

#include "command_line.h"
#include "edit_session.h"
#include "envelope_output.h"
#include "envelope_run.h"
#include "file_text.h"
#include "interruption.h"
#include "job_files.h"
#include "labelled_file.h"
#include "listing.h"
#include "log.h"
#include "mail.h"
#include "model_file.h"
#include "moment_drawing.h"
#include "paper.h"
#include "progress_bar.h"
#include "result_file.h"
#include "settings.h"
#include "trace.h"

#include <mdtools/debug_output.h>
#include <mdtools/strings.h>
#include <mdtools/version_info.h>

#include <exception>
#include <sstream>
#include <utility>

namespace Girder {

namespace {

constexpr int DefaultPositions = 5000;
constexpr int MaximumPositions = 1000000;

constexpr const char* Usage =
    "usage: girder [MODEL] [--result FILE] [--archive DIR]   compute a girder\n"
    "       girder envelope MODEL [--positions N] [--result FILE]\n"
    "                                                        move the train over it\n"
    "       girder edit MODEL                                edit it by commands from the input\n"
    "       girder print MODEL                               listing and moment line to the "
    "printer\n"
    "       girder mail MODEL [--to RECEIVER,...]            the same by mail\n"
    "       girder settings                                  show the settings\n"
    "       girder set NAME VALUE                            change a setting\n"
    "       girder --version | --help\n"
    "Without MODEL the last one is computed again.\n";

std::vector<std::string> withoutFirst(const std::vector<std::string>& arguments)
{
    return {arguments.begin() + 1, arguments.end()};
}

Tools::VersionInfo ownVersion()
{
    return {Tools::ModuleHandle{}, "040704b0,040704e4"};
}

std::string ownName()
{
    const Tools::VersionInfo info = ownVersion();
    return info.getProductName() + ' ' + info.getVersion();
}

// One run of the program: the settings are read once, at its beginning, and every command reports
// through fail() or wrongUsage(), which write to the console and to the log.
class Program {
public:
    explicit Program(const Console& console)
        : m_console(console),
          m_out(console.out),
          m_errors(console.errors),
          m_directory(workDirectory(m_settings.directory())),
          m_log(m_directory)
    {}

    Outcome run(const std::vector<std::string>& arguments);

private:
    Outcome wrongUsage(const std::string& text);
    Outcome fail(const std::string& file, const std::string& text);
    Outcome showVersion();
    Outcome showSettings();
    Outcome changeSetting(const std::string& name, const std::string& value);
    Outcome compute(const CommandLine& arguments);
    Outcome edit(const CommandLine& arguments);
    Outcome envelope(const CommandLine& arguments);
    Outcome printOut(const CommandLine& arguments);
    Outcome mail(const CommandLine& arguments);
    Outcome runTrain(const Model& model, int positions, const JobFiles& files);
    std::string modelOf(const CommandLine& arguments);
    std::string writeListing(const std::string& file, Model& model);
    int stationsOf(const Model& model) const;
    bool load(const std::string& file, Model& model);
    bool computeInto(const Model& model, const std::string& file, Results& results);
    Outcome store(const Results& results, const JobFiles& files, const std::string& archive);

    Console m_console;
    std::ostream& m_out;
    std::ostream& m_errors;
    Settings m_settings;
    std::string m_directory;
    Log m_log;
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
    if (command == "--version")
        return showVersion();
    if (command == "--help") {
        m_out << Usage;
        return Outcome::Done;
    }
    if (command == "edit")
        return edit(CommandLine(withoutFirst(arguments), {}));
    if (command == "print")
        return printOut(CommandLine(withoutFirst(arguments), {}));
    if (command == "mail")
        return mail(CommandLine(withoutFirst(arguments), {"--to"}));
    if (command == "envelope")
        return envelope(CommandLine(withoutFirst(arguments), {"--positions", "--result"}));
    return compute(CommandLine(arguments, {"--result", "--archive"}));
}

Outcome Program::wrongUsage(const std::string& text)
{
    m_errors << "girder: " << text << '\n' << Usage;
    return Outcome::WrongUsage;
}

Outcome Program::fail(const std::string& file, const std::string& text)
{
    m_errors << file << ": " << text << '\n';
    Log::write(file + ": " + text);
    return Outcome::Failed;
}

Outcome Program::showVersion()
{
    m_out << ownName() << '\n' << ownVersion().getLegalCopyright() << '\n';
    return Outcome::Done;
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

// Empty, after a message, if the arguments are wrong.
std::string Program::modelOf(const CommandLine& arguments)
{
    std::string file;
    if (!arguments.problem.empty())
        wrongUsage(arguments.problem);
    else if (arguments.operands.size() > 1)
        wrongUsage("one model at a time");
    else if (file = arguments.operands.empty() ? m_settings.lastModel() : arguments.operands[0];
             file.empty())
        wrongUsage("a model is missing");
    return file;
}

Outcome Program::compute(const CommandLine& arguments)
{
    const std::string file = modelOf(arguments);
    if (file.empty())
        return Outcome::WrongUsage;
    const JobFiles files(file, arguments.option("--result"), m_directory);
    if (absolutePath(files.results) == absolutePath(file))
        return wrongUsage("the results would replace the model");
    Model model;
    Results results;
    if (!load(file, model) || !computeInto(model, file, results))
        return Outcome::Failed;
    printListing(results, m_settings.numberFormat(), m_out);
    return store(results, files, arguments.option("--archive"));
}

Outcome Program::edit(const CommandLine& arguments)
{
    const std::string file = modelOf(arguments);
    Model model;
    if (file.empty())
        return Outcome::WrongUsage;
    if (!load(file, model))
        return Outcome::Failed;
    const int stations = stationsOf(model);
    Document document(std::move(model));
    EditSession session(document, file, stations, m_settings.numberFormat(), m_out, m_errors);
    return session.run(m_console.in) ? Outcome::Done : Outcome::Failed;
}

Outcome Program::envelope(const CommandLine& arguments)
{
    const std::string file = modelOf(arguments);
    if (file.empty())
        return Outcome::WrongUsage;
    const std::string count = arguments.option("--positions");
    int positions = DefaultPositions;
    if ((!count.empty() && !isWholeNumber(count, positions)) || positions < 2 ||
        positions > MaximumPositions) {
        return wrongUsage("\"--positions\" must be a whole number from 2 to " +
                          std::to_string(MaximumPositions));
    }
    const JobFiles files(file, arguments.option("--result"), m_directory, "envelope");
    if (absolutePath(files.results) == absolutePath(file))
        return wrongUsage("the results would replace the model");
    Model model;
    if (!load(file, model))
        return Outcome::Failed;
    if (model.train.empty())
        return fail(file, "train: is missing, there is nothing to move over the girder");
    return runTrain(model, positions, files);
}

// The file of the listing with the moment line, or empty after a message.
std::string Program::writeListing(const std::string& file, Model& model)
{
    Results results;
    if (!load(file, model) || !computeInto(model, file, results))
        return "";
    std::string listing = absolutePath(fileFor(file, m_directory, "listing"));
    std::ostringstream text;
    printListing(results, m_settings.numberFormat(), text);
    text << '\f'; // the drawing stays whole, on a page of its own
    drawMoments(model, m_settings.numberFormat(), text);
    if (!writeTextFile(listing, text.str())) {
        fail(listing, "cannot be written");
        return "";
    }
    // What the other program shows comes after it.
    m_out << "Listing: " << listing << std::endl;
    return listing;
}

Outcome Program::printOut(const CommandLine& arguments)
{
    const std::string file = modelOf(arguments);
    if (file.empty())
        return Outcome::WrongUsage;
    Model model;
    PrintJob job;
    job.listing = writeListing(file, model);
    if (job.listing.empty())
        return Outcome::Failed;
    job.parameterFile = absolutePath(fileFor(file, m_directory, "xml"));
    job.title = model.title;
    job.description = "Continuous girder, spans: " + std::to_string(model.spans.size());
    job.projectDirectory = directoryOf(file);
    job.program = ownName();
    if (const std::string problem = print(job); !problem.empty())
        return fail(job.parameterFile, problem);
    m_out << "Print job: " << job.parameterFile << '\n';
    Log::write(file + ": print job in " + job.parameterFile);
    return Outcome::Done;
}

Outcome Program::mail(const CommandLine& arguments)
{
    const std::string file = modelOf(arguments);
    if (file.empty())
        return Outcome::WrongUsage;
    const std::string to = arguments.option("--to");
    Model model;
    Mail message;
    message.receivers = to.empty() ? m_settings.mailReceivers() : Tools::tokenize(to, ", ");
    if (message.receivers.empty())
        return wrongUsage("a receiver is missing");
    message.sender = m_settings.mailSender();
    message.host = m_settings.mailHost();
    message.textFile = writeListing(file, model);
    if (message.textFile.empty())
        return Outcome::Failed;
    message.subject = toSubject(model.title);
    if (const std::string problem = send(message); !problem.empty())
        return fail(file, problem);
    for (const std::string& receiver : message.receivers)
        m_out << "Sent to: " << receiver << '\n';
    Log::write(file + ": sent by mail");
    return Outcome::Done;
}

Outcome Program::runTrain(const Model& model, int positions, const JobFiles& files)
{
    const EnvelopeSolver solver(model, stationsOf(model), positions);
    Envelope envelope;
    Interruption interruption;
    ProgressBar bar(m_errors);
    Tools::debugPrintf("girder: %d positions of the train\n", positions);
    switch (computeEnvelopeInBackground(solver, interruption, m_console.isTerminal ? &bar : nullptr,
                                        envelope)) {
    case RunEnd::Done:
        break;
    case RunEnd::Cancelled:
        m_errors << "girder: interrupted\n";
        Log::write(files.model + ": envelope interrupted");
        return Outcome::Interrupted;
    case RunEnd::NoThread:
        return fail("girder", "the system has no thread left to compute with");
    }
    if (!isFinite(envelope))
        return fail(files.model, "some number is too large or too small to compute with");
    printEnvelope(model, envelope, m_settings.numberFormat(), m_out);
    if (!writeEnvelope(model, envelope, files.results))
        return fail(files.results, "cannot be written");
    m_out << "\nEnvelope: " << files.results << '\n';
    Log::write(files.model + ": envelope in " + files.results);
    return Outcome::Done;
}

int Program::stationsOf(const Model& model) const
{
    return model.stations > 0 ? model.stations : m_settings.stationsPerSpan();
}

bool Program::load(const std::string& file, Model& model)
{
    Tools::debugPrintf("girder: reading %s\n", file.c_str());
    Remarks remarks(file);
    model = readModel(file, remarks);
    for (const std::string& line : remarks.lines()) {
        m_errors << line << '\n';
        Log::write(line);
    }
    if (remarks.hasError())
        return false;
    m_settings.setLastModel(absolutePath(file));
    return true;
}

bool Program::computeInto(const Model& model, const std::string& file, Results& results)
{
    const int stations = stationsOf(model);
    Tools::debugPrintfLabel(TraceLabel, "girder: %d spans, %d stations in each\n",
                            static_cast<int>(model.spans.size()), stations);
    results = computeResults(model, stations);
    if (!results.isFinite()) {
        fail(file, "some number is too large or too small to compute with");
        return false;
    }
    for (const SupportResult& support : results.supports) {
        Tools::debugPrintfLabel(TraceLabel, "girder: support at %.3f m: %.3f kN, %.3f kNm\n",
                                support.x, support.reaction, support.moment);
    }
    return true;
}

Outcome Program::store(const Results& results, const JobFiles& files, const std::string& archive)
{
    if (!writeResults(results, files.results))
        return fail(files.results, "cannot be written");
    if (!writeLabelledResults(results, files.text))
        return fail(files.text, "cannot be written");
    m_out << "\nResults: " << files.results << "\nas text: " << files.text << '\n';
    Log::write(files.model + ": results in " + files.results);
    Tools::debugPrintf("girder: results in %s\n", files.results.c_str());
    if (archive.empty())
        return Outcome::Done;
    const std::string folder = files.archiveIn(archive);
    if (folder.empty())
        return fail(archive, "the job cannot be archived here");
    m_out << "Archive: " << folder << '\n';
    Log::write(files.model + ": archived in " + folder);
    return Outcome::Done;
}

}

Outcome run(const std::vector<std::string>& arguments, Console console)
{
    try {
        const Outcome outcome = Program(console).run(arguments);
        // Results that nobody received, on a full disk for instance, are a failure.
        if (console.out.flush() || outcome != Outcome::Done)
            return outcome;
        console.errors << "girder: the output cannot be written\n";
        return Outcome::Failed;
    } catch (const std::exception& exception) {
        console.errors << "girder: " << exception.what() << '\n';
        return Outcome::Failed;
    }
}

}
