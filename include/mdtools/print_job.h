#pragma once

#include <mdtools/export.h>

#include <memory>
#include <string>

namespace Tools {

// One job for the family's print tool: files to print, placeholders for its forms, options. The
// tool finds them in an XML parameter file of pure ASCII, whatever the code page of the paths. A
// value for one thread at a time; all paths and texts are kept as given, in the process's code
// page.
class MDTOOLS_API InvokeMdPrint {
public:
    // Each is 1 by default; any other value than 1 counts as the other choice.
    enum CharSet : int { Oem = 0, Ansi = 1 };
    enum PrintMode : int { Direct = 0, Dialog = 1 };
    enum DeleteFiles : int { Yes = 0, No = 1 };
    enum Application : int { PrintTool = 0, ReportTool = 1 };

    // The parameter file is written when the job is started.
    InvokeMdPrint(const std::string& printProgram, const std::string& parameterFile);
    // With the print tool "\Tools\MdPrint.Exe" below the installation directory.
    explicit InvokeMdPrint(const std::string& parameterFile);
    InvokeMdPrint(const InvokeMdPrint& other);
    InvokeMdPrint& operator=(const InvokeMdPrint& other);
    ~InvokeMdPrint();

    // Files to print, in order, duplicates kept. The tool prints kind after kind: ASCII files,
    // scripts, Fortran lists, Fortran script lists, text blocks.
    void addASCIIFile(const std::string& path);
    void addScriptFile(const std::string& path);
    void addFortranFile(const std::string& path);
    void addFortranScriptFile(const std::string& path);
    void addPendoTextBlockFile(const std::string& path);

    // A placeholder that is there already gets the new content. One without content is not handed
    // on.
    void addSubstitute(const std::string& name, const std::string& content);
    void removeSubstitute(const std::string& name);

    // The four placeholders that every job has, under names in the user's language.
    void setProjectName(const std::string& name);
    void setProjectDescription(const std::string& description);
    void setProjectDirectory(const std::string& directory);
    void setAuthor(const std::string& author);

    void setProjectPath(const std::string& path);
    // Where the tool runs; "." at first.
    void setCurrentDirectory(const std::string& directory);
    // Kept for the caller; not handed on.
    void setWatermark(const std::string& watermark);
    std::string getWatermark() const;

    void setCharSet(CharSet charSet);
    void setPrintMode(PrintMode mode);
    // Whether the tool deletes the input files, and the parameter file, when it is done.
    void setDeleteFiles(DeleteFiles deleteFiles);
    void setDeleteXmlFile(DeleteFiles deleteFiles);

    // Writes the parameter file (unless there is no file to print) and starts the tool; with `wait`
    // returns when the tool has ended. Nothing that fails is reported.
    void startMdPrint(bool wait);

    // The application that the user prefers for reports, kept for the whole process; PrintTool at
    // first. May be called from any thread.
    static Application getReportSelection();
    static void setReportSelection(Application application);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}
