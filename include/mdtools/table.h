#pragma once

#include <mdtools/export.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace Tools {

// A function given by points (x, y) and straight lines between them. Points may come in any order;
// they are sorted on the first lookup after one was added. A table is a value: copies are
// independent. One thread at a time, lookups included, because they may sort.
class MDTOOLS_API Table {
public:
    Table() = default;
    Table(const Table& other) = default;
    Table& operator=(const Table& other);
    ~Table() = default;

    // A table that was moved from has no points.
    Table(Table&& other) noexcept;
    Table& operator=(Table&& other) noexcept;

    // Several points may have the same x; which of them then comes first is not fixed. A point
    // whose x is not a number comes after all others.
    void addPair(const std::pair<double, double>& point);
    void addPair(double x, double y);

    // Beyond the first and the last point the value is that of this point, or, if the lower
    // extrapolation is enabled, that of the straight line through the two outermost points. The
    // switch for the lower end rules both ends: the one for the upper end is only kept. Callers
    // that want extrapolation at the top enable the lower one.
    void enableLowerExtrapolation(bool enable);
    void enableUpperExtrapolation(bool enable);

    // At the x of an inner point this is the end of the line that leads to it, at the x of the
    // first point the beginning. Where two points with the same x make a line, the division by zero
    // shows: infinity or not-a-number. 0.0 without points.
    //
    // Sorting apart, the time does not depend on the number of points unless they crowd together in
    // a small part of the table; then it grows with the logarithm of it.
    double getValue(double x);

    // Does now what the next lookup would do; nothing if no point was added since the last time.
    void sort();

    bool isEmpty() const;

    // Removes the points. The extrapolation stays as it is.
    void reset();

private:
    using Point = std::pair<double, double>;

    // Finds the points next to an x, for all x in (from, to]; for none as long as `to` is not a
    // number. A part of the table, because a lookup takes little longer than following a pointer.
    struct Index {
        double from = 0.0;
        double to = std::numeric_limits<double>::quiet_NaN();
        double start = 0.0;
        double bucketsPerUnit = 0.0;
        double lastBucket = 0.0;
        std::size_t lastFew = 0;
        std::vector<std::uint32_t> buckets;

        std::size_t bucketOf(double x) const;
    };

    double getValueWithoutIndex(double x);
    // Beyond the point `end`, by the line from the point `line` to the next one.
    double getOuterValue(std::size_t end, std::size_t line, double x) const;
    void makeIndex();

    std::vector<Point> m_points;
    bool m_isSorted = false;
    bool m_lowerExtrapolation = false;
    bool m_upperExtrapolation = false;
    // Points with a number as x: the first ones.
    std::size_t m_numberCount = 0;
    Index m_index;
};

}
