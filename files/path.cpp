#include <mdtools/path.h>

#include "files/separators.h"
#include "platform/filesystem.h"
#include "platform/known_folders.h"
#include "text/characters.h"

#include <mdtools/constants.h>

namespace Tools {

namespace {

// "//server/share" or a character and a colon; 0 where neither leads the text. A server without a
// share is no location, nor is one whose share no slash follows.
std::size_t locationLength(const std::string& text)
{
    if (text.starts_with("//")) {
        const std::size_t server = text.find('/', 2);
        if (server == std::string::npos)
            return 0;
        const std::size_t share = text.find('/', server + 1);
        return share == std::string::npos ? 0 : share;
    }
    const std::size_t second = text.empty() ? 0 : Characters::length(text, 0);
    return second < text.size() && text[second] == ':' ? second + 1 : 0;
}

}

Path::Path()
{
    setPath(Platform::currentDirectory() + C::Backslash);
}

Path::Path(const std::string& text)
{
    setPath(text);
}

std::string Path::path(bool native) const
{
    return convert(m_path, !native);
}

Path::operator std::string()
{
    return m_path;
}

Path::operator std::string() const
{
    return m_path;
}

bool Path::operator==(const Path& other) const
{
    return m_path == other.m_path && m_location == other.m_location &&
           m_directory == other.m_directory && m_file == other.m_file &&
           m_extension == other.m_extension;
}

void Path::setPath(const std::string& text)
{
    if (!text.empty()) {
        // From the left: what is a location is no directory any more, and a dot in a directory is
        // no extension.
        std::string rest = convert(text, true);
        m_location = rest.substr(0, locationLength(rest));
        rest.erase(0, m_location.size());
        const std::size_t name = rest.rfind('/') + 1;
        const std::size_t dot = rest.rfind('.');
        const bool hasExtension = dot != std::string::npos && dot >= name;
        m_directory = rest.substr(0, name);
        m_file = rest.substr(name, hasExtension ? dot - name : std::string::npos);
        m_extension = hasExtension ? rest.substr(dot + 1) : std::string();
    }
    compose();
}

void Path::setLocation(const std::string& location)
{
    m_location = convert(location, true);
    compose();
}

void Path::setDirectory(const std::string& directory)
{
    m_directory = convert(directory, true);
    if (!m_directory.empty() && !m_directory.ends_with('/'))
        m_directory += '/';
    compose();
}

void Path::setFile(const std::string& file)
{
    m_file = convert(file, true);
    compose();
}

void Path::setExtension(const std::string& extension)
{
    m_extension = convert(extension, true);
    if (m_extension.starts_with('.'))
        m_extension.erase(0, 1);
    compose();
}

void Path::setTemporary(const std::string& prefix, int number)
{
    const std::string file = prefix + std::to_string(number);
    setTemporaryPath();
    // The prefix is not split: a dot in it belongs to the name.
    m_file = convert(file, true);
    m_extension = "tmp";
    compose();
}

void Path::setTemporaryPath()
{
    setPath(Platform::temporaryDirectory());
}

bool Path::valid() const
{
    return Platform::entryType(m_path) != Platform::EntryType::None;
}

std::string Path::convert(const std::string& text, bool toSlash)
{
    std::string result = text;
    if (toSlash)
        Separators::toSlashes(result);
    else
        Separators::toBackslashes(result);
    return result;
}

void Path::convert(bool toSlash)
{
    m_path = convert(m_path, toSlash);
}

void Path::compose()
{
    std::string path;
    // One allocation, and into a new text: an argument may be a part of the old one.
    path.reserve(m_location.size() + m_directory.size() + m_file.size() + m_extension.size() + 1);
    path.append(m_location).append(m_directory).append(m_file);
    if (!m_extension.empty())
        path.append(1, '.').append(m_extension);
    m_path = std::move(path);
}

void addBackslashIfNecessary(std::string& path)
{
    if (!path.empty() && !Separators::endsWithOne(path))
        path += C::Backslash;
}

void goUp(std::string& path)
{
    if (Characters::endsWith(path, '\\'))
        path.pop_back();
    // Behind the last backslash; npos + 1 is 0.
    path.resize(Characters::findLast(path, '\\') + 1);
}

}
