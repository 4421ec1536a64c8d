#include "result_file.h"

#include "names.h"
#include "record_text.h"

namespace Girder {

namespace {

using Tools::Smart::Record;
using Tools::Smart::Sequence;

// Numbers and names as the reader of the file counts them: from 1.
Record recordOf(const SupportResult& support, int number)
{
    Record record;
    setText(record, "kind", nameOf(support.kind));
    return record.setDecimal("number", number)
        .setReal("x", support.x)
        .setReal("reaction", support.reaction)
        .setReal("moment", support.moment);
}

Record recordOf(const Station& station)
{
    return Record()
        .setReal("x", station.x)
        .setReal("moment", station.moment)
        .setReal("shear", station.shear)
        .setReal("deflection", station.deflection);
}

Record recordOf(const SpanResult& span, int number)
{
    Sequence stations;
    for (const Station& station : span.stations)
        stations.push_back(recordOf(station));
    Record record;
    record.setDecimal("number", number)
        .setReal("start", span.start)
        .setReal("length", span.length)
        .setReal("greatestMoment", span.greatestMoment)
        .setSequence("stations", stations);
    if (span.capacity > 0.0)
        record.setReal("capacity", span.capacity);
    return record;
}

Record recordOf(const Extreme& extreme)
{
    return Record()
        .setReal("value", extreme.value)
        .setDecimal("span", static_cast<int>(extreme.span) + 1)
        .setReal("x", extreme.position);
}

Record recordOf(const Range& range)
{
    return Record()
        .setRecord("minimum", recordOf(range.minimum()))
        .setRecord("maximum", recordOf(range.maximum()));
}

Record recordOf(const Extremes& extremes)
{
    return Record()
        .setRecord("moment", recordOf(extremes.moment))
        .setRecord("shear", recordOf(extremes.shear))
        .setRecord("deflection", recordOf(extremes.deflection));
}

// A record for each item, numbered from 1.
template <class Item>
Sequence sequenceOf(const std::vector<Item>& items)
{
    Sequence sequence;
    int number = 0;
    for (const Item& item : items)
        sequence.push_back(recordOf(item, ++number));
    return sequence;
}

}

bool writeResults(const Results& results, const std::string& file)
{
    Record record;
    setText(record, "title", results.title);
    record.setSequence("supports", sequenceOf(results.supports))
        .setSequence("spans", sequenceOf(results.spans))
        .setRecord("extremes", recordOf(results.extremes));
    return writeRecord(record, file);
}

}
