#include "girder/moment_drawing.h"
#include "girder/number_text.h"
#include "girder_test.h"
#include "support/child_process.h"
#include "support/shared_value.h"

#include <mdtools/environment.h>
#include <mdtools/folders.h>

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using namespace Girder;
using namespace GirderTest;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// The recording program under another name in a directory of its own; what was recorded last.
class Recorder {
public:
    explicit Recorder(const std::string& directory, const std::string& name)
        : m_directory(inWorkDirectory(directory))
    {
        const std::filesystem::path program = MdToolsTest::builtProgram("test_child_program");
        std::filesystem::create_directories(m_directory);
        std::filesystem::copy_file(program, m_directory + "/" + name);
        Tools::Environment("MDTOOLS_RECORD").setValue(m_record);
    }
    ~Recorder()
    {
        std::filesystem::remove_all(m_directory);
        std::filesystem::remove(m_record);
        Tools::Environment("MDTOOLS_EXIT").setValue("");
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    std::string record() const { return MdToolsTest::readFile(m_record); }

private:
    std::string m_directory;
    std::string m_record = inWorkDirectory("record");
};

const std::string umlauts = "\xDC"
                            "berbau \xDF\xE4\xF6\xFC";

TEST_F(GirderProgram, prints)
{
    const std::string model = write("paper.girder", replaced("Two", umlauts));
    const std::string job = inWorkDirectory("files/paper.xml");
    MdToolsTest::SharedValue installation(Tools::Registry::LocalMachine,
                                          "SOFTWARE\\MERODA\\Install", "Directory");
    installation.set(Tools::RegistryValue::String, "");
    EXPECT_EQ(runWith({"print", model}).errors,
              job + ": there is no print tool: the settings name no installation directory\n");
    const std::string family = inWorkDirectory("family");
    installation.set(Tools::RegistryValue::String, family);
    EXPECT_EQ(runWith({"print", model}).errors,
              job + ": there is no print tool: " + family + "\\Tools\\MdPrint.Exe is missing\n");

    const Recorder tool("family/Tools", "MdPrint.Exe");
    const RunResult printed = runWith({"print", model});
    EXPECT_EQ(printed.outcome, Outcome::Done);
    EXPECT_EQ(printed.errors, "");
    EXPECT_THAT(printed.output, HasSubstr("Print job: " + job + "\n"));
    EXPECT_THAT(tool.record(), HasSubstr("argument: @" + job + "\n"));
    const std::string parameters = MdToolsTest::readFile(job);
    EXPECT_THAT(parameters, HasSubstr("files&#047;paper.listing</Dateiname>"));
    EXPECT_THAT(parameters, HasSubstr("<Optionen Env=\"meroda\" DirektDrucken=\"yes\"/>"));
    EXPECT_THAT(parameters, HasSubstr("<Inhalt>&#220;berbau&#032;&#223;&#228;&#246;&#252;&#092;"));

    // The listing, and on a page of its own the moment line.
    const std::string listing = MdToolsTest::readFile(inWorkDirectory("files/paper.listing"));
    EXPECT_THAT(listing, StartsWith(umlauts));
    const std::size_t page = listing.find("\fMoments [kNm]");
    ASSERT_NE(page, std::string::npos);
    EXPECT_THAT(listing.substr(page), HasSubstr(" |A"));
}

TEST_F(GirderProgram, mails)
{
    const std::string model = write("mail.girder", twoSpans);
    Tools::Environment path("PATH");
    const std::string previous = path.getValue();
    const std::string extension =
        std::filesystem::path(MdToolsTest::builtProgram("test_child_program")).extension().string();
    EXPECT_EQ(runWith({"mail", model}).errors,
              model + ": the mailer \"postie\" cannot be started\n");

    const Recorder mailer("mailer", "postie" + extension);
    path.setValue(inWorkDirectory("mailer") + MdToolsTest::PathSeparator + previous);
    const std::string user = Tools::getUserName();
    const std::string end =
        "argument: -s:Two\\ 'spans'\nargument: -file:" + inWorkDirectory("files/mail.listing") +
        "\n";
    EXPECT_EQ(runWith({"mail", model}).outcome, Outcome::Done);
    EXPECT_THAT(mailer.record(),
                HasSubstr("argument: -from:" + user + "\nargument: -to:" + user + "\n" + end));
    for (const auto& [name, value] :
         {std::pair("MailHost", "mail.host"), std::pair("MailSender", "a@b.c"),
          std::pair("MailReceivers", "d@e.f, g@h.i")})
        EXPECT_EQ(runWith({"set", name, value}).outcome, Outcome::Done);
    EXPECT_EQ(runWith({"mail", model}).outcome, Outcome::Done);
    EXPECT_THAT(mailer.record(), HasSubstr("argument: -host:mail.host\nargument: -from:a@b.c\n"
                                           "argument: -to:d@e.f,g@h.i\n" +
                                           end));
    const RunResult sent = runWith({"mail", model, "--to", "j@k.l"});
    EXPECT_THAT(sent.output, HasSubstr("Sent to: j@k.l\n"));
    EXPECT_THAT(mailer.record(), HasSubstr("argument: -to:j@k.l\n"));

    Tools::Environment("MDTOOLS_EXIT").setValue("3");
    EXPECT_EQ(runWith({"mail", model}).errors, model + ": the mailer failed with exit code 3\n");
    EXPECT_EQ(runWith({"mail", model, "--to", "a\"b"}).errors,
              model + ": cannot be handed to the mailer: a\"b\n");
    path.setValue(previous);
}

TEST(GirderDrawing, momentLine)
{
    const auto draw = [](double load, Support end) {
        Model model;
        model.spans = {{8.0, {{0.0, 1000.0}}, {load, {}}}};
        model.supports = {end, Support::Hinged};
        std::ostringstream out;
        drawMoments(model, {NumberStyle::Fixed, 1}, out);
        return out.str();
    };
    const std::string simple = draw(12.0, Support::Hinged);
    EXPECT_THAT(simple, HasSubstr("\n 0.0 |A" + std::string(70, '-') + "A\n"));
    // The lowest row begins half a row of 24 above the peak, where the parabola is sqrt(1/48) of
    // its half width, 5.2 of 36 columns, away from the middle.
    EXPECT_THAT(simple, HasSubstr("\n96.0 |" + std::string(30, ' ') + "************\n"));
    const std::string clamped = draw(12.0, Support::Fixed);
    EXPECT_THAT(clamped, HasSubstr("\n-96.0 |*\n"));
    EXPECT_THAT(clamped, HasSubstr("\n  0.0 |#----------------*"));
    EXPECT_THAT(clamped, HasSubstr("\n 54.0 |"));
    // Nothing to draw, numbers near the ends of the range.
    for (const double load : {0.0, 1e-320, 1e300})
        EXPECT_THAT(draw(load, Support::Fixed), HasSubstr(" |#"));
}

TEST(GirderNumbers, texts)
{
    EXPECT_EQ(toText(-4.5), "-4.5");
    struct Case {
        double value;
        const char *fixed, *scientific, *general, *engineering;
    };
    static const Case cases[] = {
        {1234.56784, "1234.568", "1.235E+03", "1.23E+03", "1.235E+03"},
        {-0.0004, "0.000", "-4.000E-04", "-0.0004", "-400.000E-06"},
        {-0.0, "0.000", "0.000E+00", "0", "0.000E+00"},
        {-5e-324, "0.000", "0.000E+00", "0", "0.000E+00"}, // no number of use
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toListText(c.value, {NumberStyle::Fixed, 3}), c.fixed);
        EXPECT_EQ(toListText(c.value, {NumberStyle::Scientific, 3}), c.scientific);
        EXPECT_EQ(toListText(c.value, {NumberStyle::General, 3}), c.general);
        EXPECT_EQ(toListText(c.value, {NumberStyle::Engineering, 3}), c.engineering);
    }
}

}
