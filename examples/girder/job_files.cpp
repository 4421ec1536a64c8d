#include "job_files.h"

#include <mdtools/directory.h>
#include <mdtools/file.h>
#include <mdtools/folders.h>
#include <mdtools/path.h>

namespace Girder {

namespace {

using Tools::Directory;
using Tools::File;
using Tools::Path;

std::string nameOf(const std::string& file)
{
    Path path(file);
    path.setLocation("");
    path.setDirectory("");
    return path.path();
}

std::string withExtension(const std::string& file, const std::string& extension)
{
    Path path(file);
    // Never the file itself.
    path.setExtension(path.extension() == extension ? extension + "." + extension : extension);
    return path.path();
}

// A new folder. Another program may make one of the same name at the same moment, which then comes
// out as a copy that fails, because nothing is overwritten in it.
std::string makeFolder(const std::string& directory, const std::string& name)
{
    std::string folder = joinPath(directory, name);
    for (int number = 2; File::exists(folder); ++number)
        folder = joinPath(directory, name + "-" + std::to_string(number));
    return Directory::createRecursively(folder) ? folder : "";
}

}

// With the separator that the directory itself uses, as users see these paths again.
std::string joinPath(const std::string& directory, const std::string& name)
{
    if (directory.empty() || directory.back() == '/' || directory.back() == '\\')
        return directory + name;
    const bool hasBackslashes = directory.find('\\') != std::string::npos;
    return directory + (hasBackslashes ? "\\" : "/") + name;
}

std::string workDirectory(const std::string& configured)
{
    const std::string user = configured.empty() ? Tools::getUserDirectory() : "";
    const std::string directory = user.empty() ? configured : joinPath(user, "Girder");
    return Directory::createRecursively(directory) ? directory : "";
}

std::string absolutePath(const std::string& file)
{
    const Path path(file);
    const bool isAbsolute = !path.location().empty() || path.directory().starts_with("/");
    return isAbsolute ? file : joinPath(Directory::getCurrent(), file);
}

std::string directoryOf(const std::string& file)
{
    const std::string path = absolutePath(file);
    return path.substr(0, path.size() - nameOf(path).size());
}

std::string fileFor(const std::string& model, const std::string& directory,
                    const std::string& extension)
{
    const std::string file = withExtension(model, extension);
    return directory.empty() ? file : joinPath(directory, nameOf(file));
}

JobFiles::JobFiles(const std::string& modelFile, const std::string& resultFile,
                   const std::string& directory, const std::string& extension)
    : model(modelFile), results(resultFile)
{
    if (results.empty())
        results = fileFor(model, directory, extension);
    text = withExtension(results, "txt");
}

std::string JobFiles::archiveIn(const std::string& directory) const
{
    std::string folder = makeFolder(directory, File::getNameWithoutExtension(model));
    if (folder.empty())
        return "";
    for (const std::string& file : {model, results, text}) {
        // Results may carry the name of the model, in another directory.
        if (File::exists(joinPath(folder, nameOf(file))) || !File::copy(file, folder, nameOf(file)))
            return "";
    }
    return folder;
}

}
