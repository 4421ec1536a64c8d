#include "paper.h"

#include <mdtools/file.h>
#include <mdtools/folders.h>
#include <mdtools/print_job.h>

namespace Girder {

std::string print(const PrintJob& job)
{
    const std::string installation = Tools::getInstallationDirectory(false);
    if (installation.empty())
        return "there is no print tool: the settings name no installation directory";
    // The job itself does not report whether it finds its tool.
    const std::string tool = installation + "\\Tools\\MdPrint.Exe";
    if (!Tools::File::exists(tool))
        return "there is no print tool: " + tool + " is missing";
    if (job.parameterFile.find('"') != std::string::npos)
        return "a path with a double quote cannot be handed to the print tool";

    Tools::File::remove(job.parameterFile);
    Tools::InvokeMdPrint invocation(tool, job.parameterFile);
    invocation.addASCIIFile(job.listing);
    invocation.setProjectPath(job.projectDirectory);
    invocation.setProjectName(job.title);
    invocation.setProjectDescription(job.description);
    invocation.setProjectDirectory(job.projectDirectory);
    invocation.setAuthor(Tools::getUserName());
    invocation.addSubstitute("Program", job.program);
    invocation.setPrintMode(Tools::InvokeMdPrint::Direct);
    invocation.startMdPrint(true);
    return Tools::File::exists(job.parameterFile) ? "" : "the print job cannot be written";
}

}
