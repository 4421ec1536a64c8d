#include <mdtools/table.h>

#include <algorithm>
#include <cmath>
#include <emmintrin.h>
#include <limits>

namespace Tools {

namespace {

using Point = std::pair<double, double>;

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

// A lookup compares its x with this many points at once if its bucket has no more.
constexpr std::size_t FewPoints = 4;

// A strict order in spite of x that are not numbers: they come last.
bool isLess(const Point& a, const Point& b)
{
    return a.first < b.first || (std::isnan(b.first) && !std::isnan(a.first));
}

// How many of four points lie below x. A branch on each of them would be mispredicted half of the
// time.
std::size_t countBelow(const Point* points, double x)
{
    const auto compare = [x](const Point* two) {
        const __m128d both = _mm_loadh_pd(_mm_load_sd(&two[0].first), &two[1].first);
        return _mm_castpd_si128(_mm_cmplt_pd(both, _mm_set1_pd(x)));
    };
    // Each one that does is -1.
    const __m128i sums = _mm_add_epi64(compare(points), compare(points + 2));
    const __m128i sum = _mm_add_epi64(sums, _mm_unpackhi_epi64(sums, sums));
    return static_cast<std::size_t>(-_mm_cvtsi128_si64(sum));
}

inline double interpolate(const Point& a, const Point& b, double x)
{
    return a.second + (b.second - a.second) * (x - a.first) / (b.first - a.first);
}

void prefetch(const Point* point)
{
    _mm_prefetch(reinterpret_cast<const char*>(point), _MM_HINT_T0);
}

// The first of the sorted points that is not below x: a binary search, without branches for the
// same reason. Without them the processor does not guess how it goes on, so that points which are
// far away have to be asked for early.
const Point* search(const Point* points, std::size_t size, double x)
{
    constexpr std::size_t ManyPoints = 4096;
    const bool isFar = size > ManyPoints;
    while (size > 1) {
        const std::size_t half = size / 2;
        size -= half;
        if (isFar) {
            prefetch(points + size / 2);
            prefetch(points + half + size / 2);
        }
        points += half * (points[half - 1].first < x ? 1 : 0);
    }
    return points + (size == 1 && points->first < x ? 1 : 0);
}

}

// By way of a copy, because without memory for all of it the points and their index would not
// belong together.
Table& Table::operator=(const Table& other)
{
    return *this = Table(other);
}

Table::Table(Table&& other) noexcept
{
    *this = std::move(other);
}

Table& Table::operator=(Table&& other) noexcept
{
    m_points = std::move(other.m_points);
    m_isSorted = other.m_isSorted;
    m_lowerExtrapolation = other.m_lowerExtrapolation;
    m_upperExtrapolation = other.m_upperExtrapolation;
    m_numberCount = other.m_numberCount;
    m_index = std::move(other.m_index);
    other.reset();
    return *this;
}

void Table::addPair(const std::pair<double, double>& point)
{
    m_points.push_back(point);
    m_isSorted = false;
    m_index.to = NotANumber;
}

void Table::addPair(double x, double y)
{
    addPair({x, y});
}

void Table::enableLowerExtrapolation(bool enable)
{
    m_lowerExtrapolation = enable;
}

void Table::enableUpperExtrapolation(bool enable)
{
    m_upperExtrapolation = enable;
}

// Never decreases with x, also in the last bit, so that points of other buckets than that of an x
// are on the expected side of it. Zero times infinity belongs to the first bucket.
inline std::size_t Table::Index::bucketOf(double x) const
{
    const double position = (x - start) * bucketsPerUnit;
    const double bucket = std::min(std::max(0.0, position), lastBucket);
    return static_cast<std::size_t>(static_cast<std::int64_t>(bucket));
}

double Table::getValue(double x)
{
    // Of all lines that x lies on, the first one counts: it ends at the first point that is not
    // below x.
    if (!(x > m_index.from && x <= m_index.to))
        return getValueWithoutIndex(x);
    const std::size_t bucket = m_index.bucketOf(x);
    const std::size_t begin = m_index.buckets[bucket];
    const std::size_t size = m_index.buckets[bucket + 1] - begin;
    const Point* upper = m_points.data();
    if (size <= FewPoints) {
        upper += std::min(begin, m_index.lastFew);
        upper += countBelow(upper, x);
    } else {
        upper = search(upper + begin, size, x);
    }
    return interpolate(upper[-1], upper[0], x);
}

double Table::getValueWithoutIndex(double x)
{
    if (!m_isSorted) {
        sort();
        return getValue(x);
    }
    const std::size_t size = m_points.size();
    if (size == 0)
        return 0.0;
    const Point* const points = m_points.data();
    if (x <= points[0].first)
        return getOuterValue(0, 0, x);
    if (m_numberCount > 0 && x <= points[m_numberCount - 1].first) {
        const Point* const upper = search(points, m_numberCount, x);
        return interpolate(upper[-1], upper[0], x);
    }
    return getOuterValue(size - 1, size - 2, x);
}

double Table::getOuterValue(std::size_t end, std::size_t line, double x) const
{
    if (!m_lowerExtrapolation || m_points.size() < 2)
        return m_points[end].second;
    return interpolate(m_points[line], m_points[line + 1], x);
}

void Table::sort()
{
    if (m_isSorted)
        return;
    // Equal x keep the order in which they came, so that every platform gives the same results.
    if (!std::is_sorted(m_points.begin(), m_points.end(), isLess))
        std::stable_sort(m_points.begin(), m_points.end(), isLess);
    const auto isNumber = [](const Point& point) { return !std::isnan(point.first); };
    const auto end = std::partition_point(m_points.begin(), m_points.end(), isNumber);
    m_numberCount = static_cast<std::size_t>(end - m_points.begin());
    m_index = Index();
    if (m_numberCount >= FewPoints && m_numberCount < std::numeric_limits<std::uint32_t>::max())
        makeIndex();
    m_isSorted = true;
}

bool Table::isEmpty() const
{
    return m_points.empty();
}

void Table::reset()
{
    m_points.clear();
    m_numberCount = 0;
    m_index = Index();
}

// A bucket index: the range between the first and the last finite x is cut into buckets of equal
// width, as many as there are points, and each knows its first point; one more holds the end.
// `lastFew` is the first of the last FewPoints points.
void Table::makeIndex()
{
    // Infinities lie in the outermost buckets. Where no width can be had, because all x are the
    // same or farther apart than any double, these two take all points.
    const auto begin = m_points.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(m_numberCount);
    const auto isFinite = [](const Point& point) { return std::isfinite(point.first); };
    const auto first = std::find_if(begin, end, isFinite);
    const auto last = std::find_if(std::make_reverse_iterator(end), m_points.rend(), isFinite);
    m_index.start = first != end ? first->first : 0.0;
    const double width = first != end ? last->first - m_index.start : 0.0;
    m_index.bucketsPerUnit = static_cast<double>(m_numberCount) / width;
    m_index.lastBucket = static_cast<double>(m_numberCount - 1);
    m_index.lastFew = m_numberCount - FewPoints;

    m_index.buckets.assign(m_numberCount + 1, static_cast<std::uint32_t>(m_numberCount));
    std::size_t next = 0;
    for (std::size_t i = 0; i < m_numberCount; ++i) {
        for (const std::size_t bucket = m_index.bucketOf(m_points[i].first); next <= bucket; ++next)
            m_index.buckets[next] = static_cast<std::uint32_t>(i);
    }
    m_index.from = begin->first;
    m_index.to = end[-1].first;
}

}
