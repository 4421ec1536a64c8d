#pragma once

#include <mdtools/recorder.h>

#include <string>
#include <vector>

namespace Girder {

// What is to be said about a model file, each remark one line that names the file and the entry.
class Remarks {
public:
    explicit Remarks(const std::string& file) : m_file(file) {}

    // `entry` is a path such as "spans[2].length", items counted from 1; empty: the whole file.
    void info(const std::string& entry, const std::string& text);
    void warning(const std::string& entry, const std::string& text);
    void error(const std::string& entry, const std::string& text);

    // With an error the model cannot be computed.
    bool hasError() const { return m_recorder.hasError(); }
    const Tools::Recorder& recorder() const { return m_recorder; }
    std::vector<std::string> lines() const;

private:
    void record(Tools::Record::Level level, const std::string& entry, const std::string& text);

    std::string m_file;
    Tools::Recorder m_recorder;
};

}
