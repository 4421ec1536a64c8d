#pragma once

#include <mdtools/export.h>

#include <memory>
#include <string>
#include <vector>

// Logging of finished lines. A line goes to every sink as it is: no time, level or prefix is added,
// and each sink adds its own line end. There are no levels; filtering is the caller's affair.
//
// Nothing here takes a lock, but for the creation of the LoggerManager: whoever writes, adds or
// removes from several threads at once has to serialise these calls. Nothing reports a failure.

namespace Tools {

// A sink of lines.
class MDTOOLS_API Logger {
public:
    virtual ~Logger();
    // Copying a sink copies nothing; a derived class decides for itself.
    Logger(const Logger& other) = default;
    Logger& operator=(const Logger& other) = default;

    // Flushes and closes whatever the sink holds open.
    virtual void release() = 0;
    // Writes one line; `line` has no line end.
    virtual void writeLine(const std::string& line) = 0;

protected:
    Logger() = default;
};

// Appends lines to a text file. A line and its end ("\r\n" on Windows, where line feeds inside the
// text become "\r\n" as well) go to the system in one write before the call returns, so a program
// that is killed loses no line, and lines of several programs that write the same file do not mix.
// Others may read and write the file while it is open, but cannot remove or rename it by File;
// child processes do not inherit it.
//
// If the file ends inside of a line when it is opened, or after a line for which the disk had no
// room, the next line is written with a line end before it; nothing is cut off. A logger whose file
// cannot be opened stays silent, and a pipe that nobody reads loses the lines.
class MDTOOLS_API FileLogger : public Logger {
public:
    // Opens nothing yet.
    FileLogger(const std::string& path);
    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;
    // Closes the file.
    ~FileLogger() override;

    // Starts a fresh log: a file that is there already is removed or, if it is a link or somebody
    // has it open, emptied, so that all loggers of a file go on in the same one. Devices and pipes
    // stay. May be called again.
    void initialize();
    // Takes over the path and opens the file, keeping what it holds - but only if the logger has no
    // path yet. One constructed with a path ignores the call and stays closed.
    void initialize(const std::string& path);

    // After that the lines are lost, until initialize() opens the file again.
    void release() override;
    void writeLine(const std::string& line) override;

private:
    void open(bool isFresh);
    void cleanUp();

    struct State;
    std::unique_ptr<State> m_state;
};

// The sinks of the process. It shares their ownership: a sink lives at least as long as it is
// registered.
class MDTOOLS_API LoggerManager {
public:
    // The only one, made at its first use. At the end of the process, after the destructors of the
    // program's static objects (or when the library is unloaded), its sinks are released and
    // dropped; a line written still later goes nowhere.
    static LoggerManager& get();

    // Copies share the sinks.
    LoggerManager(const LoggerManager& other) = default;
    LoggerManager& operator=(const LoggerManager& other) = default;

    // Null, and a sink that is there already, are ignored.
    void add(std::shared_ptr<Logger> logger);
    // Does not release the sink. Null and unknown ones are ignored.
    void remove(std::shared_ptr<Logger> logger);
    // Releases all sinks in the order of their registration, then drops them.
    void release();

    void writeLine(const std::string& line) const;
    // Formats as printf does, whatever the length; an empty text is an empty line. Nothing is
    // written if the text cannot be formatted, or if a width or precision in the format is beyond
    // 65,535. The spelling of the name is part of the interface.
    void writeFormatedLine(const char* format, ...) const;

private:
    LoggerManager() = default;
    ~LoggerManager();

    std::vector<std::shared_ptr<Logger>> m_loggers;
};

// A list of sinks that a component keeps for itself. It does not own them: a sink has to be
// detached before it is destroyed.
class MDTOOLS_API LoggerNotifier {
public:
    // Null, and a sink that is there already, are ignored.
    void attach(Logger* logger);
    // Null and unknown ones are ignored.
    void detach(Logger* logger);

    // To every sink, in the order in which they were attached. Null writes nothing.
    void notifyWriteLine(const std::string& line) const;
    void notifyWriteLine(const char* line) const;

private:
    std::vector<Logger*> m_loggers;
};

}
