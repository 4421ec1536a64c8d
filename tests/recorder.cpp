#include <mdtools/recorder.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Tools::Record;
using Tools::Recorder;

TEST(Recorder, answersByLevel)
{
    struct Case {
        std::vector<Record::Level> levels;
        bool info, warning, error;
    };
    const Case cases[] = {
        {{}, false, false, false},
        // Neither of them counts as a remark for the user.
        {{Record::None, Record::Detail, static_cast<Record::Level>(7)}, false, false, false},
        {{Record::Info}, true, false, false},
        {{Record::Detail, Record::Warning}, false, true, false},
        {{Record::Error, Record::Info}, true, false, true},
    };
    for (const Case& c : cases) {
        Recorder recorder;
        for (const Record::Level level : c.levels)
            recorder.record(Record(level, "text"));
        SCOPED_TRACE(c.levels.size());
        EXPECT_EQ(recorder.isEmpty(), c.levels.empty());
        EXPECT_EQ(recorder.hasInfo(), c.info);
        EXPECT_EQ(recorder.hasWarning(), c.warning);
        EXPECT_EQ(recorder.hasError(), c.error);
        EXPECT_EQ(recorder.hasAnyInfoWarnError(), c.info || c.warning || c.error);
        for (const Record::Level level : c.levels)
            EXPECT_TRUE(recorder.hasRecord(level));
    }
}

TEST(Recorder, keepsRecordsInOrder)
{
    Recorder recorder;
    const Record twice(Record::Warning, "twice");
    Record taken(Record::Error, "a text that is too long to be kept inside the object itself");
    recorder.record(twice);
    recorder.record(std::move(taken));
    recorder.record(twice);
    EXPECT_EQ(taken.getText(), "");
    // Records of its own are welcome, though they move.
    for (int i = 0; i < 20; ++i)
        recorder.record(recorder.getRecords().front());

    const Recorder copy = recorder;
    recorder.clear();
    EXPECT_TRUE(recorder.isEmpty());
    ASSERT_EQ(copy.getRecords().size(), 23U);
    EXPECT_EQ(copy.getRecords()[1].getLevel(), Record::Error);
    EXPECT_EQ(copy.getRecords()[1].getText(),
              "a text that is too long to be kept inside the object itself");
    for (const std::size_t i : {0U, 2U, 22U})
        EXPECT_EQ(copy.getRecords()[i].getText(), "twice");
}

}
