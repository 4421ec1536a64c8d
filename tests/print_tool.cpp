#include "support/child_process.h"
#include "support/files.h"

#include <mdtools/print_job.h>

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace {

using MdToolsTest::readFile;
using MdToolsTest::workPath;
using MdToolsTest::writeFile;

MdToolsTest::ChildResult runTool(const std::string& argument)
{
    return MdToolsTest::runChild(MdToolsTest::builtProgram("mdprint"), {argument});
}

// The number of pages that the page tree holds.
int countPages(const std::string& pdf)
{
    std::smatch match;
    return std::regex_search(pdf, match, std::regex("/Count ([0-9]+)")) ? std::stoi(match[1]) : 0;
}

std::string lines(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "line\r\n";
    return text;
}

TEST(PrintTool, printsJobs)
{
    struct Case {
        const char* name;
        std::string listing;
        int pages;
    };
    const Case cases[] = {
        {"empty", "", 1},
        {"short", lines(20), 1},
        {"long", lines(150), 3},
        {"fed", "a\fb\nc\f\fd", 4},
        {"together", lines(50) + "\r\n" + lines(50), 2}, // a block that fits a page is not torn
        {"wide", std::string(92 * 100, '\xE4'), 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string listing = workPath(c.name);
        writeFile(listing, c.listing);
        Tools::InvokeMdPrint job(MdToolsTest::builtProgram("mdprint"), listing + ".xml");
        job.addASCIIFile(listing);
        job.setProjectName("H\xE4user");
        job.setDeleteXmlFile(Tools::InvokeMdPrint::Yes);
        job.startMdPrint(true);
        const std::string pdf = readFile(listing + ".pdf");
        EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
        EXPECT_EQ(countPages(pdf), c.pages);
        EXPECT_EQ(readFile(listing + ".xml"), "");
    }
}

TEST(PrintTool, namesWhatIsWrong)
{
    const std::string job = workPath("bad.xml");
    struct Case {
        const char *parameters, *message;
    };
    static const Case cases[] = {
        {"<MDPrintParameter>", "bad.xml, byte "},
        {"<Other/>", "no \"MDPrintParameter\""},
        {"<MDPrintParameter><Eingabedateien><Script><Dateiname>none</Dateiname></Script>"
         "</Eingabedateien></MDPrintParameter>",
         "none: cannot be read"},
    };
    for (const Case& c : cases) {
        writeFile(job, c.parameters);
        const MdToolsTest::ChildResult result = runTool("@" + job);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.errors.find(c.message), std::string::npos) << result.errors;
    }
    EXPECT_EQ(runTool(job).exitCode, 2);
}

}
