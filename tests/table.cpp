#include <mdtools/table.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

using Tools::Table;

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

using Points = std::vector<std::pair<double, double>>;

Table makeTable(const Points& points)
{
    Table table;
    for (const auto& point : points)
        table.addPair(point);
    return table;
}

TEST(Table, interpolates)
{
    Table table = makeTable({{10.0, 100.0}, {0.0, 0.0}});
    table.addPair(5.0, 80.0);
    EXPECT_EQ(table.getValue(2.5), 40.0);
    EXPECT_EQ(table.getValue(5.0), 80.0);
    EXPECT_EQ(table.getValue(7.5), 90.0);
    EXPECT_EQ(table.getValue(-5.0), 0.0);
    EXPECT_EQ(table.getValue(20.0), 100.0);
    table.addPair(20.0, 0.0);
    EXPECT_EQ(table.getValue(15.0), 50.0);
}

TEST(Table, lowerSwitchExtrapolatesBothEnds)
{
    Table table = makeTable({{0.0, 0.0}, {10.0, 100.0}});
    table.enableUpperExtrapolation(true);
    EXPECT_EQ(table.getValue(20.0), 100.0);
    EXPECT_EQ(table.getValue(-5.0), 0.0);
    table.enableLowerExtrapolation(true);
    EXPECT_EQ(table.getValue(20.0), 200.0);
    EXPECT_EQ(table.getValue(-5.0), -50.0);
    table.enableUpperExtrapolation(false);
    EXPECT_EQ(table.getValue(20.0), 200.0);

    table.reset();
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ(table.getValue(1.0), 0.0);
    table.addPair(1.0, 7.0);
    EXPECT_FALSE(table.isEmpty());
    for (const double x : {-5.0, 1.0, 5.0, NotANumber})
        EXPECT_EQ(table.getValue(x), 7.0);
    table.addPair(2.0, 8.0);
    EXPECT_EQ(table.getValue(3.0), 9.0) << "reset leaves the switches";
}

TEST(Table, copiesAreIndependent)
{
    Table table = makeTable({{2.0, 2.0}, {1.0, 1.0}, {3.0, 3.0}, {5.0, 9.0}});
    EXPECT_EQ(table.getValue(4.0), 6.0);
    Table copy = table;
    copy.addPair(4.0, 0.0);
    EXPECT_EQ(copy.getValue(4.0), 0.0);
    EXPECT_EQ(table.getValue(4.0), 6.0);
    Table moved = std::move(copy);
    EXPECT_EQ(moved.getValue(4.0), 0.0);
    copy = std::move(moved);
    EXPECT_EQ(copy.getValue(4.0), 0.0);
    EXPECT_TRUE(moved.isEmpty()); // and usable
    EXPECT_EQ(moved.getValue(4.0), 0.0);
    moved.addPair(1.0, 6.0);
    EXPECT_EQ(moved.getValue(4.0), 6.0);
    moved = table;
    moved = std::as_const(moved);
    moved.addPair(4.0, 1.0);
    EXPECT_EQ(moved.getValue(4.0), 1.0);
    EXPECT_EQ(table.getValue(4.0), 6.0);
}

// What getValue() means, word by word.
double walk(const Points& points, bool extrapolates, double x)
{
    const auto line = [x](const auto& a, const auto& b) {
        return a.second + (b.second - a.second) * (x - a.first) / (b.first - a.first);
    };
    const std::size_t size = points.size();
    const bool hasLine = extrapolates && size >= 2;
    if (x <= points[0].first)
        return hasLine ? line(points[0], points[1]) : points[0].second;
    for (std::size_t i = 0; i + 1 < size; ++i) {
        if (points[i].first <= x && x <= points[i + 1].first)
            return line(points[i], points[i + 1]);
    }
    return hasLine ? line(points[size - 2], points[size - 1]) : points[size - 1].second;
}

bool isBefore(const std::pair<double, double>& a, const std::pair<double, double>& b)
{
    return std::isnan(b.first) ? !std::isnan(a.first) : a.first < b.first;
}

void expectWalk(Points points)
{
    Table table = makeTable(points);
    std::stable_sort(points.begin(), points.end(), isBefore);
    std::vector<double> places = {-Infinity, -1e300, -1.0, 0.0, 0.5, 1e300, Infinity, NotANumber};
    for (std::size_t i = 0; i < points.size(); i += 1 + points.size() / 200) {
        const double x = points[i].first;
        const double between = x / 2.0 + points[(i + 1) % points.size()].first / 2.0;
        for (const double place :
             {x, std::nextafter(x, -Infinity), std::nextafter(x, Infinity), between})
            places.push_back(place);
    }
    for (const bool extrapolates : {false, true}) {
        table.enableLowerExtrapolation(extrapolates);
        for (const double x : places) {
            const double value = table.getValue(x);
            const double expected = walk(points, extrapolates, x);
            ASSERT_TRUE(std::bit_cast<std::uint64_t>(value) ==
                            std::bit_cast<std::uint64_t>(expected) ||
                        (std::isnan(value) && std::isnan(expected)))
                << points.size() << " points, x = " << x << ": " << value << ", not " << expected;
        }
    }
}

TEST(Table, givesTheValuesOfTheWalk)
{
    static const Points cases[] = {
        {{1.0, 2.0}, {1.0, 3.0}},
        {{1.0, 2.0}, {1.0, 3.0}, {1.0, 5.0}, {2.0, 7.0}, {2.0, 8.0}, {3.0, 0.0}},
        {{-0.0, 1.0}, {0.0, 2.0}, {1.0, 3.0}, {1.0, 4.0}},
        {{NotANumber, 1.0}},
        {{NotANumber, 1.0}, {NotANumber, 2.0}, {0.0, 3.0}},
        {{NotANumber, 1.0}, {1.0, 2.0}, {0.0, 3.0}, {2.0, 4.0}, {3.0, 4.0}},
        {{-Infinity, 1.0}, {Infinity, 2.0}},
        {{-Infinity, 1.0}, {0.0, 5.0}, {1.0, 3.0}, {2.0, 0.0}, {Infinity, 2.0}},
        {{-Infinity, 1.0}, {-Infinity, 2.0}, {Infinity, 3.0}, {Infinity, 2.0}, {Infinity, 9.0}},
        {{-1.7e308, 1.0}, {-1.0, 2.0}, {0.0, 3.0}, {1.0, 4.0}, {1.7e308, 5.0}}, // endless width
        {{0.0, 1.0}, {5e-324, 2.0}, {1e-323, 3.0}, {1.5e-323, 4.0}}, // no width to speak of
        {{0.0, Infinity}, {1.0, 1.0}, {2.0, NotANumber}, {3.0, 1.0}},
    };
    for (const Points& points : cases)
        expectWalk(points);
}

TEST(Table, givesTheValuesOfTheWalkAtRandom)
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 300; ++i) {
        const std::size_t count = i % 50 == 0 ? 20000 : 1 + random() % 60;
        const unsigned kind = random() % 4;
        Points points;
        for (std::size_t k = 0; k < count; ++k) {
            const double x = unit(random);
            const double places[] = {
                x,
                std::round(x * 10.0),                                        // many equal ones
                std::pow(x, 9.0),                                            // a cluster
                std::bit_cast<double>((random() & 0x83FFFFFFFFFFFFFF) << 4), // of any size
            };
            points.emplace_back(places[kind], unit(random));
        }
        if (kind == 0 && random() % 2 == 0)
            std::sort(points.begin(), points.end());
        ASSERT_NO_FATAL_FAILURE(expectWalk(points));
    }
}

}
