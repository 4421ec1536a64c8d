#include "listing.h"

#include "names.h"
#include "text_table.h"

#include <algorithm>

namespace Girder {

namespace {

constexpr double Millimetres = 1000.0;
constexpr double Percent = 100.0;

// The parts of the listing, each a table.
class Listing {
public:
    Listing(const Results& results, const NumberFormat& format, std::ostream& out)
        : m_results(results), m_format(format), m_out(out)
    {}

    void printSupports() const
    {
        TextTable table({"Support", "x [m]", "reaction [kN]", "moment [kNm]"});
        int number = 0;
        for (const SupportResult& support : m_results.supports) {
            table.add({std::to_string(++number) + " " + nameOf(support.kind), text(support.x),
                       text(support.reaction), text(support.moment)});
        }
        table.print(m_out);
    }

    void printSpan(std::size_t index) const
    {
        const SpanResult& span = m_results.spans[index];
        TextTable table(
            {"Span " + std::to_string(index + 1), "x [m]", "M [kNm]", "V [kN]", "w [mm]"});
        for (const Station& station : span.stations) {
            table.add({"", text(station.x), text(station.moment), text(station.shear),
                       text(station.deflection * Millimetres)});
        }
        table.print(m_out);
    }

    bool hasReinforcement() const
    {
        return std::any_of(m_results.spans.begin(), m_results.spans.end(),
                           [](const SpanResult& span) { return span.capacity > 0.0; });
    }

    void printReinforcement() const
    {
        TextTable table({"Reinforcement", "max M [kNm]", "capacity [kNm]", "used [%]"});
        for (std::size_t i = 0; i < m_results.spans.size(); ++i) {
            const SpanResult& span = m_results.spans[i];
            if (span.capacity <= 0.0)
                continue;
            const double used = Percent * std::max(span.greatestMoment, 0.0) / span.capacity;
            table.add({"span " + std::to_string(i + 1), text(span.greatestMoment),
                       text(span.capacity), text(used)});
        }
        table.print(m_out);
    }

    void printExtremes() const
    {
        TextTable table({"Extremes", "value", "span", "x [m]"});
        addRange(table, "M [kNm]", m_results.extremes.moment, 1.0);
        addRange(table, "V [kN]", m_results.extremes.shear, 1.0);
        addRange(table, "w [mm]", m_results.extremes.deflection, Millimetres);
        table.print(m_out);
    }

private:
    std::string text(double value) const { return toListText(value, m_format); }

    void addRange(TextTable& table, const std::string& name, const Range& range, double unit) const
    {
        const auto add = [&](const char* kind, const Extreme& extreme) {
            table.add({kind + name, text(extreme.value * unit), std::to_string(extreme.span + 1),
                       text(extreme.position)});
        };
        add("max ", range.maximum());
        add("min ", range.minimum());
    }

    const Results& m_results;
    NumberFormat m_format;
    std::ostream& m_out;
};

}

void printListing(const Results& results, const NumberFormat& format, std::ostream& out)
{
    const Listing listing(results, format, out);
    out << results.title << "\n\n";
    listing.printSupports();
    for (std::size_t i = 0; i < results.spans.size(); ++i) {
        out << '\n';
        listing.printSpan(i);
    }
    out << '\n';
    listing.printExtremes();
    if (listing.hasReinforcement()) {
        out << '\n';
        listing.printReinforcement();
    }
}

}
