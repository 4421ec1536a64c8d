#include <mdtools/application_registry.h>
#include <mdtools/environment.h>
#include <mdtools/print_job.h>
#include <mdtools/registry.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using MdToolsTest::readText;
using Tools::InvokeMdPrint;
namespace fs = std::filesystem;

class PrintJob : public ::testing::Test {
protected:
    const std::string m_parameters =
        (fs::path(MdToolsTest::workDirectory()) / "print job.xml").string();
    const std::string m_record = (fs::path(MdToolsTest::workDirectory()) / "record").string();

    InvokeMdPrint makeJob() const
    {
        return InvokeMdPrint(MdToolsTest::builtProgram("test_child_program"), m_parameters);
    }

    // The parameter file that the job writes; the tool must have been given it.
    std::string printed(InvokeMdPrint& job)
    {
        Tools::Environment("MDTOOLS_RECORD").setValue(m_record);
        fs::remove(m_record);
        fs::remove(m_parameters);
        job.startMdPrint(true);
        EXPECT_NE(readText(m_record).find("argument: @" + m_parameters + "\n"), std::string::npos);
        return readText(m_parameters);
    }
};

TEST_F(PrintJob, oneFileWithDefaults)
{
    InvokeMdPrint job = makeJob();
    job.addASCIIFile("C:\\a b.txt");
    EXPECT_EQ(printed(job), "<?xml version=\"1.0\"?>\n"
                            "<MDPrintParameter>\n"
                            " <Eingabedateien>\n"
                            "  <ASCIIDatei>\n"
                            "   <Dateiname>C&#058;&#092;a&#032;b.txt</Dateiname>\n"
                            "  </ASCIIDatei>\n"
                            " </Eingabedateien>\n"
                            " <Optionen Env=\"meroda\"/>\n"
                            "</MDPrintParameter>\n");
}

TEST_F(PrintJob, everything)
{
    InvokeMdPrint job = makeJob();
    job.addPendoTextBlockFile("t");
    job.addFortranScriptFile("fs");
    job.addFortranFile("f");
    job.addScriptFile("s/_~");
    job.addASCIIFile("a");
    job.addASCIIFile("a");
    job.setProjectPath("\xE4+,-.09AZaz");
    job.setProjectName("Hall");
    job.setProjectDescription("Roof");
    job.setProjectDirectory("d");
    job.setAuthor("");
    job.addSubstitute("zz", "last");
    job.addSubstitute("zz", "very last");
    job.addSubstitute("AA", "");
    job.addSubstitute("", "nameless");
    job.addSubstitute("gone", "x");
    job.removeSubstitute("gone");
    job.setCharSet(InvokeMdPrint::Oem);
    job.setPrintMode(static_cast<InvokeMdPrint::PrintMode>(2)); // any value but 1
    job.setDeleteFiles(InvokeMdPrint::Yes);
    job.setDeleteXmlFile(InvokeMdPrint::Yes);
    job.setWatermark("draft");
    EXPECT_EQ(job.getWatermark(), "draft");
    const InvokeMdPrint original = job;
    InvokeMdPrint copy = original;
    copy.addSubstitute("only in the copy", "x");
    EXPECT_EQ(printed(job),
              "<?xml version=\"1.0\"?>\n<MDPrintParameter>\n"
              " <Projektpfad>\n  <Pfadname>&#228;+,-.09AZaz</Pfadname>\n </Projektpfad>\n"
              " <Eingabedateien>\n"
              "  <ASCIIDatei>\n   <Dateiname>a</Dateiname>\n  </ASCIIDatei>\n"
              "  <ASCIIDatei>\n   <Dateiname>a</Dateiname>\n  </ASCIIDatei>\n"
              "  <Script>\n   <Dateiname>s&#047;&#095;&#126;</Dateiname>\n  </Script>\n"
              "  <FortranListe>\n   <Dateiname>f</Dateiname>\n  </FortranListe>\n"
              "  <FortranScriptListe>\n   <Dateiname>fs</Dateiname>\n  </FortranScriptListe>\n"
              "  <PendoTextBlock>\n   <Dateiname>t</Dateiname>\n  </PendoTextBlock>\n"
              " </Eingabedateien>\n"
              " <Optionen Env=\"meroda\" Charset=\"oem\" DirektDrucken=\"yes\""
              " Eingabedateienloeschen=\"yes\" XMLDateiloeschen=\"yes\"/>\n"
              " <PlatzhalterListe>\n"
              "  <Platzhalter>\n   <Name>Project&#032;description</Name>\n"
              "   <Inhalt>Roof</Inhalt>\n  </Platzhalter>\n"
              "  <Platzhalter>\n   <Name>Project&#032;directory</Name>\n"
              "   <Inhalt>d</Inhalt>\n  </Platzhalter>\n"
              "  <Platzhalter>\n   <Name>Project&#032;name</Name>\n   <Inhalt>Hall</Inhalt>\n"
              "  </Platzhalter>\n"
              "  <Platzhalter>\n   <Name>zz</Name>\n   <Inhalt>very&#032;last</Inhalt>\n"
              "  </Platzhalter>\n"
              " </PlatzhalterListe>\n"
              "</MDPrintParameter>\n");
}

TEST_F(PrintJob, withoutFilesOnlyTheToolStarts)
{
    InvokeMdPrint job = makeJob();
    job.setProjectName("Hall");
    EXPECT_EQ(printed(job), "");
    EXPECT_FALSE(fs::exists(m_parameters));
}

// The tool of the installation is named without quotes, in the current directory unless told.
TEST_F(PrintJob, startsTheInstalledTool)
{
    using namespace Tools;
    const fs::path folder = MdToolsTest::workDirectory();
    const std::string tool = MdToolsTest::builtProgram("test_child_program");
    fs::create_directory(folder / "Tools");
    fs::create_directory(folder / "place");
    fs::copy_file(fs::exists(tool) ? tool : tool + ".exe", folder / "Tools" / "MdPrint.Exe");
    const std::string key = getMerodaRegistryPath("Install");
    RegistryKey install = Registry::find(Registry::LocalMachine, key, true);
    const RegistryValue former = install["Directory"];
    RegistryValue value;
    value.setName("Directory").setType(RegistryValue::String).setData(folder.string());
    install.add(value);
    InvokeMdPrint job(m_parameters);
    job.addASCIIFile("a");
    printed(job);
    EXPECT_EQ(readText(m_record).find("directory: " + fs::current_path().filename().string()), 0U);
    job.setCurrentDirectory((folder / "place").string());
    printed(job);
    EXPECT_EQ(readText(m_record).find("directory: place\n"), 0U);
    install.add(former);
}

TEST_F(PrintJob, whatFailsIsNotReported)
{
    InvokeMdPrint job("mdtools-no-such-tool", MdToolsTest::workDirectory() + "/missing/job.xml");
    job.addASCIIFile("a");
    EXPECT_NO_THROW(job.startMdPrint(true));

    EXPECT_EQ(InvokeMdPrint::getReportSelection(), InvokeMdPrint::PrintTool);
    InvokeMdPrint::setReportSelection(InvokeMdPrint::ReportTool);
    EXPECT_EQ(InvokeMdPrint::getReportSelection(), InvokeMdPrint::ReportTool);
}

}
