#include <mdtools/selection.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

using Tools::SelectableObject;
using Flag = SelectableObject::Flag;

class Object : public SelectableObject {
public:
    explicit Object(int flag) { setSelected(static_cast<Flag>(flag)); }
    Object() = default;
};

TEST(SelectableObject, transitions)
{
    struct Row {
        const char* name;
        std::function<void(Object&)> operation;
        int after[4]; // by the flag before
    };
    static const Row rows[] = {
        {"condSelect(1)", [](Object& o) { o.condSelect(1); }, {1, 3, 3, 3}},
        {"condSelect(-5)", [](Object& o) { o.condSelect(-5); }, {1, 3, 3, 3}},
        {"condSelect(0)", [](Object& o) { o.condSelect(0); }, {0, 2, 0, 0}},
        {"select", [](Object& o) { o.select(); }, {3, 2, 3, 2}},
        {"toggleSelected(-1)", [](Object& o) { o.toggleSelected(-1); }, {3, 2, 3, 3}},
        {"toggleSelected(0)", [](Object& o) { o.toggleSelected(0); }, {2, 2, 2, 2}},
        {"toggleSelected(7)", [](Object& o) { o.toggleSelected(7); }, {3, 3, 3, 3}},
        {"resetUnselected", [](Object& o) { o.resetUnselected(); }, {0, 1, 0, 1}},
        {"setNotSelected", [](Object& o) { o.setNotSelected(); }, {0, 0, 0, 0}},
        {"setSelected", [](Object& o) { o.setSelected(); }, {1, 1, 1, 1}},
        {"setSelectedOff", [](Object& o) { o.setSelectedOff(); }, {2, 2, 2, 2}},
        {"setSelectedOn", [](Object& o) { o.setSelectedOn(); }, {3, 3, 3, 3}},
    };
    for (const Row& row : rows) {
        for (int before = 0; before < 4; ++before) {
            Object object(before);
            row.operation(object);
            EXPECT_EQ(object.getSelected(), row.after[before]) << row.name << " of " << before;
        }
    }
    Object object;
    EXPECT_TRUE(object.isNotSelected());
    EXPECT_EQ(object.toggleSelected(-1), SelectableObject::SelectedOn);
}

TEST(SelectableObject, testsKnowOneFlagEach)
{
    for (int flag = 0; flag < 4; ++flag) {
        const Object object(flag);
        const Object copy(object);
        EXPECT_EQ(copy.isNotSelected(), flag == 0);
        EXPECT_EQ(copy.isSelected(), flag == 1);
        EXPECT_EQ(copy.isSelectedOff(), flag == 2);
        EXPECT_EQ(copy.isSelectedOn(), flag == 3);
    }
}

}
