#include "envelope_output.h"

#include "record_text.h"
#include "text_table.h"

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

using Tools::Smart::Record;
using Tools::Smart::Sequence;

constexpr double Millimetres = 1000.0;

double positionOf(const Span& span, const std::vector<StationBounds>& stations, std::size_t i)
{
    return span.length * static_cast<double>(i) / static_cast<double>(stations.size() - 1);
}

void printSpan(const Span& span, std::size_t number, const std::vector<StationBounds>& stations,
               const NumberFormat& format, std::ostream& out)
{
    TextTable table({"Span " + std::to_string(number), "x [m]", "min M [kNm]", "max M [kNm]",
                     "min V [kN]", "max V [kN]", "min w [mm]", "max w [mm]"});
    const auto text = [&](double value) { return toListText(value, format); };
    for (std::size_t i = 0; i < stations.size(); ++i) {
        const StationBounds& bounds = stations[i];
        table.add({"", text(positionOf(span, stations, i)), text(bounds.moment.minimum),
                   text(bounds.moment.maximum), text(bounds.shear.minimum),
                   text(bounds.shear.maximum), text(bounds.deflection.minimum * Millimetres),
                   text(bounds.deflection.maximum * Millimetres)});
    }
    table.print(out);
}

Record recordOf(const Bounds& bounds)
{
    return Record()
        .setReal("minimum", bounds.minimum)
        .setReal("minimumAt", bounds.minimumAt)
        .setReal("maximum", bounds.maximum)
        .setReal("maximumAt", bounds.maximumAt);
}

Record recordOf(const Span& span, const std::vector<StationBounds>& stations)
{
    Sequence sequence;
    for (std::size_t i = 0; i < stations.size(); ++i) {
        sequence.push_back(Record()
                               .setReal("x", positionOf(span, stations, i))
                               .setRecord("moment", recordOf(stations[i].moment))
                               .setRecord("shear", recordOf(stations[i].shear))
                               .setRecord("deflection", recordOf(stations[i].deflection)));
    }
    return Record().setReal("length", span.length).setSequence("stations", sequence);
}

bool isFinite(const Bounds& bounds)
{
    return std::isfinite(bounds.minimum) && std::isfinite(bounds.maximum);
}

}

void printEnvelope(const Model& model, const Envelope& envelope, const NumberFormat& format,
                   std::ostream& out)
{
    out << model.title << "\nEnvelope of the train alone\n\n";
    TextTable reactions({"Support", "min reaction [kN]", "max reaction [kN]"});
    for (std::size_t i = 0; i < envelope.reactions.size(); ++i) {
        reactions.add({std::to_string(i + 1), toListText(envelope.reactions[i].minimum, format),
                       toListText(envelope.reactions[i].maximum, format)});
    }
    reactions.print(out);
    for (std::size_t i = 0; i < envelope.spans.size(); ++i) {
        out << '\n';
        printSpan(model.spans[i], i + 1, envelope.spans[i], format, out);
    }
}

bool writeEnvelope(const Model& model, const Envelope& envelope, const std::string& file)
{
    Record record;
    setText(record, "title", model.title);
    Sequence reactions;
    for (const Bounds& bounds : envelope.reactions)
        reactions.push_back(recordOf(bounds));
    Sequence spans;
    for (std::size_t i = 0; i < envelope.spans.size(); ++i)
        spans.push_back(recordOf(model.spans[i], envelope.spans[i]));
    record.setSequence("reactions", reactions).setSequence("spans", spans);
    return writeRecord(record, file);
}

bool isFinite(const Envelope& envelope)
{
    const auto isFiniteStation = [](const StationBounds& bounds) {
        return isFinite(bounds.moment) && isFinite(bounds.shear) && isFinite(bounds.deflection);
    };
    return std::all_of(envelope.spans.begin(), envelope.spans.end(), [&](const auto& stations) {
        return std::all_of(stations.begin(), stations.end(), isFiniteStation);
    });
}

}
