#include "support/registry_test.h"

#include <mdtools/application_registry.h>
#include <mdtools/environment.h>
#include <mdtools/language.h>

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

namespace {

using namespace Tools;
using MdToolsTest::RegistryTest;

constexpr RegistryValue::Type Text = RegistryValue::String;
constexpr RegistryValue::Type Word = RegistryValue::DWord;

class TestRegistry : public ApplicationRegistry {
public:
    explicit TestRegistry(const std::string& path) : m_path(path) { set(this); }
    ~TestRegistry() override { set(nullptr); }
    std::string getAppRelPath() const override { return m_path; }

private:
    std::string m_path;
};

class ApplicationRegistryTest : public RegistryTest {
protected:
    ApplicationRegistryTest() : m_application(m_top) {}

    ~ApplicationRegistryTest() override
    {
        const std::string_view names[] = {"SOFTWARE", "MERODA", m_top};
        const RegistryKey root = Registry::find(Registry::CurrentUser, "", false);
        Platform::removeTree(root.handle(), names);
    }

    const ApplicationRegistry::Folder& settings() const
    {
        return *m_application.getAppSettingsFolder();
    }

    TestRegistry m_application;
};

TEST(ApplicationRegistry, paths)
{
    EXPECT_EQ(getMerodaRegistryPath(""), "SOFTWARE\\MERODA");
    EXPECT_EQ(getMerodaRegistryPath("A"), "SOFTWARE\\MERODA\\A");
    EXPECT_EQ(getVokMerodaRegistryPath(""), "SOFTWARE\\VOK\\MERODA");
    EXPECT_EQ(getVokMerodaRegistryPath("Install"), "SOFTWARE\\VOK\\MERODA\\Install");
}

TEST(ApplicationRegistry, folders)
{
    EXPECT_EQ(ApplicationRegistry::get(), nullptr);
    const TestRegistry frame("Frame");
    EXPECT_EQ(ApplicationRegistry::get(), &frame);
    const ApplicationRegistry::Folder* application = frame.getAppFolder();
    const ApplicationRegistry::Folder* settings = frame.getAppSettingsFolder();
    EXPECT_EQ(application->getHive(), Registry::CurrentUser);
    EXPECT_EQ(application->getRelPath(), "Frame");
    EXPECT_EQ(application->getAbsPath(), "SOFTWARE\\MERODA\\Frame");
    EXPECT_EQ(settings->getAbsPath(), "SOFTWARE\\MERODA\\Frame\\Settings");
    EXPECT_EQ(settings->composeRelPath(""), "Frame\\Settings");
    EXPECT_EQ(settings->composeRelPath("Grid"), "Frame\\Settings\\Grid");
    EXPECT_EQ(settings->composeAbsPath("Grid"), "SOFTWARE\\MERODA\\Frame\\Settings\\Grid");

    // Folders follow the registered object, not the one that owns them.
    const ApplicationRegistry::AppFolder copy =
        dynamic_cast<const ApplicationRegistry::AppFolder&>(*settings);
    {
        const TestRegistry slab("Slab\\2");
        EXPECT_EQ(copy.getRelPath(), "Slab\\2\\Settings");
        EXPECT_EQ(application->getRelPath(), "Slab\\2");
    }
    EXPECT_EQ(ApplicationRegistry::get(), nullptr);
}

TEST_F(ApplicationRegistryTest, keysAndRegistrars)
{
    EXPECT_FALSE(settings().getKey().valid());
    EXPECT_FALSE(settings().getRegistrar("Grid").readString("Name").hasValue());
    EXPECT_FALSE(settings().findKey("Grid", false).valid());

    settings().getRegistrar("Grid").writeString("Name", "fine");
    EXPECT_EQ(settings().findKey("grid", false)["name"].getString(), "fine");
    EXPECT_TRUE(settings().getKey().valid());
    EXPECT_TRUE(settings().findKey("New", true).valid());
    EXPECT_TRUE(settings().findKey("New", false).valid());
    settings().getRegistrar("").writeDWord("Word", 4000000000u);
    EXPECT_EQ(settings().getKey()["Word"].getDWord(), 4000000000u);
}

TEST_F(ApplicationRegistryTest, readsWantTheirType)
{
    RegistryKey key = settings().findKey("", true);
    key.add(makeValue("expand", RegistryValue::ExpandString).setData("1"));
    key.add(makeValue("binary", RegistryValue::Binary).setData("1"));
    key.add(makeValue("text", Text).setData("1"));
    key.add(makeValue("word", Word).setData(-1));
    key.add(makeValue("list", RegistryValue::MultiString).setData({"1", "2"}));
    struct Case {
        const char* name;
        bool string, dword, intOfText, intOfWord;
        std::size_t ints;
    };
    const Case cases[] = {
        {"text", true, false, true, false, 0},     {"word", false, true, false, true, 0},
        {"list", false, false, false, false, 2},   {"expand", false, false, false, false, 0},
        {"binary", false, false, false, false, 0}, {"missing", false, false, false, false, 0},
    };
    const Registrar registrar = settings().getRegistrar("");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(registrar.readString(c.name).hasValue(), c.string);
        EXPECT_EQ(registrar.readDWord(c.name).hasValue(), c.dword);
        EXPECT_EQ(registrar.readInt(c.name, Text).hasValue(), c.intOfText);
        EXPECT_EQ(registrar.readBool(c.name, Word).hasValue(), c.intOfWord);
        EXPECT_EQ(registrar.readInts(c.name).size(), c.ints);
        for (const RegistryValue::Type type : {RegistryValue::None, RegistryValue::MultiString,
                                               RegistryValue::ExpandString, RegistryValue::Binary})
            EXPECT_FALSE(registrar.readInt(c.name, type).hasValue());
    }
    EXPECT_EQ(registrar.readInt("word", Word).getValue(), -1);
    EXPECT_TRUE(registrar.readBool("word", Word).getValue());
}

TEST_F(ApplicationRegistryTest, numbersInTexts)
{
    struct Case {
        const char* text;
        bool valid;
        int number;
    };
    static const Case cases[] = {
        {"12", true, 12},
        {" 12", true, 12},
        {"\t\n-7", true, -7},
        {"+3", true, 3},
        {"007", true, 7},
        {"2147483647", true, 2147483647},
        {"-2147483648", true, -2147483647 - 1},
        {"2147483648", false, 0},
        {"12x", false, 0},
        {"12 ", false, 0},
        {"1 2", false, 0},
        {"", false, 0},
        {"x", false, 0},
        {"- 1", false, 0},
        {"x1", false, 0},
        {"--1", false, 0},
        {"1.5", false, 0},
        {"-", false, 0},
        {" ", false, 0},
    };
    const Registrar registrar = settings().getRegistrar("");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        registrar.writeString("n", c.text);
        const mdt::Nullable<int> number = registrar.readInt("n", Text);
        EXPECT_EQ(number.hasValue(), c.valid);
        EXPECT_EQ(number.getValue(), c.number);
    }
}

TEST_F(ApplicationRegistryTest, writesAndReadsBack)
{
    const Registrar registrar = settings().getRegistrar("Typed");
    const RegistryKey key = settings().findKey("Typed", true);
    for (const int number : {0, 1, -1, 2147483647, -2147483647 - 1})
        for (const RegistryValue::Type type : {Text, Word}) {
            registrar.writeInt("i", number, type);
            EXPECT_EQ(key["i"].type(), type);
            EXPECT_EQ(registrar.readInt("i", type), mdt::Nullable<int>(number));
            EXPECT_EQ(registrar.readBool("i", type), mdt::Nullable<bool>(number != 0));
        }
    registrar.writeInt("i", -5, Text);
    EXPECT_EQ(key["i"].getString(), "-5");
    registrar.writeBool("b", true, Text);
    EXPECT_EQ(key["b"].getString(), "1");
    registrar.writeBool("b", false, Word);
    EXPECT_EQ(registrar.readBool("b", Word), mdt::Nullable<bool>(false));
    // Of any other type nothing is written, and the old value stays.
    registrar.writeBool("b", true, RegistryValue::Binary);
    registrar.writeInt("b", 3, RegistryValue::None);
    EXPECT_EQ(key["b"].type(), Word);

    const std::list<int> numbers = {3, -1, 0};
    registrar.writeInts("l", numbers.begin(), numbers.end());
    EXPECT_EQ(key["l"].getMultiString(), (std::vector<std::string>{"3", "-1", "0"}));
    EXPECT_EQ(registrar.readInts("l"), (std::vector<int>{3, -1, 0}));
    registrar.writeInts("l", {});
    EXPECT_EQ(key["l"].type(), RegistryValue::MultiString);
    EXPECT_TRUE(registrar.readInts("l").empty());
    registrar.writeIntRect("r", {1, -2, 3, 4});
    EXPECT_EQ(registrar.readInts("r"), (std::vector<int>{1, -2, 3, 4}));
    EXPECT_EQ(registrar.readIntRect("r").getValue(), (Rectangle<int>{1, -2, 3, 4}));
    registrar.writeIntSize("s", {5, 6});
    EXPECT_EQ(registrar.readIntSize("s").getValue(), (Size<int>{5, 6}));
}

TEST_F(ApplicationRegistryTest, listsOfNumbers)
{
    struct Case {
        std::vector<std::string> texts;
        std::vector<int> numbers;
        bool isSize, isRectangle;
    };
    static const Case cases[] = {
        {{"1", "a", "3"}, {1, 3}, true, false},
        {{"1", "2", "3"}, {1, 2, 3}, true, false},
        {{"1", "2", "3", "4", "5"}, {1, 2, 3, 4, 5}, true, true},
        {{" 7x", "99999999999", "-0"}, {7, 0}, true, false}, // as far as it is a number
        {{"1"}, {1}, false, false},
        {{"1", "", "3"}, {1}, false, false}, // an empty text ends the list
        {{}, {}, false, false},
    };
    RegistryKey key = settings().findKey("", true);
    const Registrar registrar = settings().getRegistrar("");
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.texts));
        key.add(makeValue("l", RegistryValue::MultiString).setData(c.texts));
        EXPECT_EQ(registrar.readInts("l"), c.numbers);
        const mdt::Nullable<Size<int>> size = registrar.readIntSize("l");
        ASSERT_EQ(size.hasValue(), c.isSize);
        if (c.isSize) {
            EXPECT_EQ(size.getValue(), (Size<int>{c.numbers[0], c.numbers[1]}));
        }
        const mdt::Nullable<Rectangle<int>> rectangle = registrar.readIntRect("l");
        ASSERT_EQ(rectangle.hasValue(), c.isRectangle);
        if (c.isRectangle) {
            EXPECT_EQ(rectangle.getValue(), (Rectangle<int>{1, 2, 3, 4}));
        }
    }
}

TEST(Environment, readAndSet)
{
    const std::string name = "MDTOOLS_TEST_VARIABLE";
    Environment variable(name);
    EXPECT_EQ(variable.getName(), name);
    EXPECT_EQ(variable.getValue(), "");
    const std::string large(5000, 'x');
    for (const std::string& text : {std::string("a b=\xE4"), large, std::string("short")}) {
        variable.setValue(text);
        EXPECT_EQ(variable.getValue(), text);
        EXPECT_EQ(Environment(name).getValue(), text);
    }
    // It never clears.
    variable.setValue("");
    EXPECT_EQ(variable.getValue(), "short");
    EXPECT_EQ(Environment(name).getValue(), "short");

    Environment none("");
    EXPECT_EQ(none.getValue(), "");
    none.setValue("kept");
    EXPECT_EQ(none.getValue(), "kept");
    EXPECT_EQ(Environment("").getValue(), "");
}

TEST(Language, isOneAtMost)
{
    const Language language;
    EXPECT_LE(language.isGerman() + language.isCzech() + language.isSlovak(), 1);
}

}
