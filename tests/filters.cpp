#include <mdtools/filters.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace Tools::Filters;

constexpr const char* Texts[] = {"GIRDER_GRILLAGE", "SLAB",    "MEMBRANE",
                                 "FRAME2D",         "FRAME3D", "SYSTEM3D"};

TEST(Filters, textsAndKinds)
{
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(Texts[i]);
        EXPECT_EQ(static_cast<int>(toKind(Texts[i])), i);
        EXPECT_EQ(tryToKind(Texts[i]).getValue(), static_cast<Kind>(i));
        EXPECT_EQ(fromKind(static_cast<Kind>(i)), Texts[i]);
        EXPECT_EQ(isPlanarXy(static_cast<Kind>(i)), i < 2);
        EXPECT_EQ(isPlanarXz(static_cast<Kind>(i)), i == 2 || i == 3);
        EXPECT_EQ(isSpatial(static_cast<Kind>(i)), i > 3);
    }
    for (const char* unknown : {"", "frame2d", "FRAME2D ", "FRAME", "XYZ"}) {
        SCOPED_TRACE(unknown);
        EXPECT_EQ(static_cast<int>(toKind(unknown)), -1);
        EXPECT_FALSE(tryToKind(unknown).hasValue());
    }
    for (const int number : {-1, 6, 1000})
        EXPECT_EQ(fromKind(static_cast<Kind>(number)), "");
}

// Row: the model's kind; column: the program's.
TEST(Filters, whatCanBeShownWhere)
{
    static const char* const table[] = {"x....x", ".x...x", "..x..x", "...xxx", "....xx", ".....x"};
    for (int model = -1; model <= 6; ++model) {
        for (int program = -1; program <= 6; ++program) {
            const bool known = model >= 0 && model < 6 && program >= 0 && program < 6;
            const bool expected = known && table[model][program] == 'x';
            EXPECT_EQ(isRepresentable(static_cast<Kind>(model), static_cast<Kind>(program)),
                      expected)
                << model << " in " << program;
            if (known) {
                EXPECT_EQ(isRepresentable(Texts[model], Texts[program]), expected);
            }
        }
    }
    EXPECT_FALSE(isRepresentable("SLAB", "XYZ"));
    EXPECT_FALSE(isRepresentable("XYZ", "XYZ"));
}

// Another refinement than the library's own, to distinguish kinds of refinement.
class Bridge : public Minor {
public:
    std::unique_ptr<Minor> clone() const override { return std::make_unique<Bridge>(); }
    bool operator==(const Minor& other) const override { return other.getName() == getName(); }
    std::string getName() const override { return "Bridge"; }
    Kind getMajorKind() const override { return Kind::GirderGrillage; }
};

TEST(Filters, refinements)
{
    EXPECT_EQ(Minor::create(""), nullptr);
    EXPECT_EQ(Minor::create("Building"), nullptr);
    EXPECT_EQ(Minor::listAllNames(), std::vector<std::string>{"Building3d"});
    const std::unique_ptr<Minor> building = Minor::create("Building3d");
    ASSERT_NE(building, nullptr);
    EXPECT_EQ(building->getName(), "Building3d");
    EXPECT_EQ(building->getMajorKind(), Kind::System3D);

    const std::unique_ptr<Minor> copy = building->clone();
    EXPECT_NE(copy, building);
    EXPECT_TRUE(Minor::areEqual(copy.get(), *building));
    EXPECT_FALSE(Minor::areEqual(building.get(), Bridge()));
    EXPECT_FALSE(Minor::areEqual(nullptr, *building));
    EXPECT_FALSE(Minor::areEqual(building.get(), nullptr));
    EXPECT_TRUE(Minor::areEqual(nullptr, nullptr));
}

TEST(Filters, packs)
{
    const Minors::Building3d building;
    const Pack bare(Kind::System3D);
    const Pack refined(Kind::System3D, &building);
    EXPECT_TRUE(bare != refined);
    EXPECT_EQ(bare, Pack(Kind::System3D, nullptr));
    EXPECT_EQ(refined, Pack(Kind::System3D, Minor::create("Building3d")));
    EXPECT_TRUE(refined != Pack(Kind::System3D, std::make_unique<Bridge>()));
    EXPECT_TRUE(refined != Pack(Kind::Slab, &building));

    Pack copy(refined);
    EXPECT_EQ(copy, refined);
    EXPECT_NE(copy.getMinor(), refined.getMinor());
    const Minor* minor = copy.getMinor();
    const Pack moved(std::move(copy));
    EXPECT_EQ(moved.getMinor(), minor);
    Pack assigned(Kind::Slab);
    assigned = refined;
    assigned = *&assigned;
    EXPECT_EQ(assigned, refined);
}

}
