#include <mdtools/print_job.h>

#include <mdtools/folders.h>
#include <mdtools/process.h>

#include "platform/filesystem.h"

#include <mdtext/mdtext.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <vector>

namespace Tools {

namespace {

using Paths = std::vector<std::string>;

constexpr unsigned ProjectNameText = 6627;
constexpr unsigned ProjectDescriptionText = 6628;
constexpr unsigned ProjectDirectoryText = 6629;
constexpr unsigned AuthorText = 3095;

// Everything but these is written by its number, so that the file is pure ASCII whatever the code
// page; the blank and "/" are no exceptions.
bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == ',' || c == '-' || c == '.';
}

// XML character references with three digits, byte by byte: the tool puts the bytes together again.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (isPlain(c)) {
            result += c;
            continue;
        }
        const unsigned value = static_cast<unsigned char>(c);
        result += "&#";
        for (const unsigned divisor : {100U, 10U, 1U})
            result += static_cast<char>('0' + value / divisor % 10);
        result += ';';
    }
    return result;
}

// In text mode, so that lines end as the platform's do. What cannot be written is left out.
void writeText(const std::string& name, const std::string& text)
{
    std::FILE* file = Platform::openStream(name, "w");
    if (file == nullptr)
        return;
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}

}

struct InvokeMdPrint::State {
    std::string printProgram;
    std::string currentDirectory = ".";
    std::string parameterFile;
    std::string projectPath;
    std::string watermark;
    std::map<std::string, std::string> placeholders;
    Paths scripts;
    Paths asciiFiles;
    Paths fortranLists;
    Paths fortranScripts;
    Paths textBlocks;
    CharSet charSet = Ansi;
    PrintMode printMode = Dialog;
    DeleteFiles deleteFiles = No;
    DeleteFiles deleteXmlFile = No;

    State(const std::string& program, const std::string& file)
        : printProgram(program), parameterFile(file)
    {
        for (const unsigned id :
             {ProjectNameText, ProjectDescriptionText, ProjectDirectoryText, AuthorText})
            placeholders[MdTextResource::get()->loadString(id)];
    }

    bool hasFiles() const
    {
        return !scripts.empty() || !asciiFiles.empty() || !fortranLists.empty() ||
               !fortranScripts.empty() || !textBlocks.empty();
    }

    // The names are in the user's language, and looked up anew, as that may have changed.
    void setPlaceholder(unsigned id, const std::string& content)
    {
        placeholders[MdTextResource::get()->loadString(id)] = content;
    }

    std::string compose() const;

private:
    std::string composeProjectPath() const;
    std::string composeFiles() const;
    std::string composeOptions() const;
    std::string composePlaceholders() const;
};

// The element names and their order are what the print tool reads.
std::string InvokeMdPrint::State::compose() const
{
    return "<?xml version=\"1.0\"?>\n<MDPrintParameter>\n" + composeProjectPath() + composeFiles() +
           composeOptions() + composePlaceholders() + "</MDPrintParameter>\n";
}

std::string InvokeMdPrint::State::composeProjectPath() const
{
    if (projectPath.empty())
        return {};
    return " <Projektpfad>\n  <Pfadname>" + escaped(projectPath) + "</Pfadname>\n </Projektpfad>\n";
}

std::string InvokeMdPrint::State::composeFiles() const
{
    struct Kind {
        const char* element;
        const Paths& paths;
    };
    const Kind kinds[] = {{"ASCIIDatei", asciiFiles},
                          {"Script", scripts},
                          {"FortranListe", fortranLists},
                          {"FortranScriptListe", fortranScripts},
                          {"PendoTextBlock", textBlocks}};
    std::string text = " <Eingabedateien>\n";
    for (const Kind& kind : kinds) {
        const std::string element = kind.element;
        for (const std::string& path : kind.paths)
            text.append("  <")
                .append(element)
                .append(">\n   <Dateiname>")
                .append(escaped(path))
                .append("</Dateiname>\n  </")
                .append(element)
                .append(">\n");
    }
    return text + " </Eingabedateien>\n";
}

// Only what differs from the default is written.
std::string InvokeMdPrint::State::composeOptions() const
{
    std::string text = " <Optionen Env=\"meroda\"";
    if (charSet != Ansi)
        text += " Charset=\"oem\"";
    if (printMode != Dialog)
        text += " DirektDrucken=\"yes\"";
    if (deleteFiles != No)
        text += " Eingabedateienloeschen=\"yes\"";
    if (deleteXmlFile != No)
        text += " XMLDateiloeschen=\"yes\"";
    return text + "/>\n";
}

std::string InvokeMdPrint::State::composePlaceholders() const
{
    // The list is there as soon as some content is, even if that one has no name.
    if (std::all_of(placeholders.begin(), placeholders.end(),
                    [](const auto& placeholder) { return placeholder.second.empty(); }))
        return {};
    std::string text = " <PlatzhalterListe>\n";
    for (const auto& [name, content] : placeholders) {
        if (!name.empty() && !content.empty())
            text.append("  <Platzhalter>\n   <Name>")
                .append(escaped(name))
                .append("</Name>\n   <Inhalt>")
                .append(escaped(content))
                .append("</Inhalt>\n  </Platzhalter>\n");
    }
    return text + " </PlatzhalterListe>\n";
}

InvokeMdPrint::InvokeMdPrint(const std::string& printProgram, const std::string& parameterFile)
    : m_state(std::make_unique<State>(printProgram, parameterFile))
{}

InvokeMdPrint::InvokeMdPrint(const std::string& parameterFile)
    : InvokeMdPrint(getInstallationDirectory(false) + "\\Tools\\MdPrint.Exe", parameterFile)
{}

InvokeMdPrint::InvokeMdPrint(const InvokeMdPrint& other)
    : m_state(std::make_unique<State>(*other.m_state))
{}

InvokeMdPrint& InvokeMdPrint::operator=(const InvokeMdPrint& other)
{
    *m_state = *other.m_state;
    return *this;
}

InvokeMdPrint::~InvokeMdPrint() = default;

void InvokeMdPrint::addASCIIFile(const std::string& path)
{
    m_state->asciiFiles.push_back(path);
}

void InvokeMdPrint::addScriptFile(const std::string& path)
{
    m_state->scripts.push_back(path);
}

void InvokeMdPrint::addFortranFile(const std::string& path)
{
    m_state->fortranLists.push_back(path);
}

void InvokeMdPrint::addFortranScriptFile(const std::string& path)
{
    m_state->fortranScripts.push_back(path);
}

void InvokeMdPrint::addPendoTextBlockFile(const std::string& path)
{
    m_state->textBlocks.push_back(path);
}

void InvokeMdPrint::addSubstitute(const std::string& name, const std::string& content)
{
    m_state->placeholders[name] = content;
}

void InvokeMdPrint::removeSubstitute(const std::string& name)
{
    m_state->placeholders.erase(name);
}

void InvokeMdPrint::setProjectName(const std::string& name)
{
    m_state->setPlaceholder(ProjectNameText, name);
}

void InvokeMdPrint::setProjectDescription(const std::string& description)
{
    m_state->setPlaceholder(ProjectDescriptionText, description);
}

void InvokeMdPrint::setProjectDirectory(const std::string& directory)
{
    m_state->setPlaceholder(ProjectDirectoryText, directory);
}

void InvokeMdPrint::setAuthor(const std::string& author)
{
    m_state->setPlaceholder(AuthorText, author);
}

void InvokeMdPrint::setProjectPath(const std::string& path)
{
    m_state->projectPath = path;
}

void InvokeMdPrint::setCurrentDirectory(const std::string& directory)
{
    m_state->currentDirectory = directory;
}

void InvokeMdPrint::setWatermark(const std::string& watermark)
{
    m_state->watermark = watermark;
}

std::string InvokeMdPrint::getWatermark() const
{
    return m_state->watermark;
}

void InvokeMdPrint::setCharSet(CharSet charSet)
{
    m_state->charSet = charSet;
}

void InvokeMdPrint::setPrintMode(PrintMode mode)
{
    m_state->printMode = mode;
}

void InvokeMdPrint::setDeleteFiles(DeleteFiles deleteFiles)
{
    m_state->deleteFiles = deleteFiles;
}

void InvokeMdPrint::setDeleteXmlFile(DeleteFiles deleteFiles)
{
    m_state->deleteXmlFile = deleteFiles;
}

void InvokeMdPrint::startMdPrint(bool wait)
{
    // Without files the tool is started with the parameter file of an earlier job, if there is one.
    if (m_state->hasFiles())
        writeText(m_state->parameterFile, m_state->compose());
    Process tool;
    tool.setCurrentDirectory(m_state->currentDirectory);
    tool.setCommandLine(m_state->printProgram + " @\"" + m_state->parameterFile + "\"");
    tool.enableShow(true);
    tool.enableWait(wait);
    tool.run();
}

namespace {

std::atomic<int> reportSelection = InvokeMdPrint::PrintTool;

}

InvokeMdPrint::Application InvokeMdPrint::getReportSelection()
{
    return static_cast<Application>(reportSelection.load(std::memory_order_relaxed));
}

void InvokeMdPrint::setReportSelection(Application application)
{
    reportSelection.store(application, std::memory_order_relaxed);
}

}
