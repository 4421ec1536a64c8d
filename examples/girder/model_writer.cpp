#include "model_writer.h"

#include "model_version.h"
#include "names.h"
#include "record_text.h"

#include <mdtools/file.h>

namespace Girder {

namespace {

using Tools::Smart::Record;
using Tools::Smart::Sequence;

Record recordOf(const PointLoad& load)
{
    return Record().setReal("position", load.position).setReal("force", load.force);
}

Record recordOf(const StiffnessPoint& point)
{
    return Record().setReal("position", point.position).setReal("value", point.value);
}

Record recordOf(const Axle& axle)
{
    return Record().setReal("distance", axle.distance).setReal("force", axle.force);
}

Record recordOf(Support support)
{
    Record record;
    setText(record, "kind", nameOf(support));
    return record;
}

template <class Item>
Sequence sequenceOf(const std::vector<Item>& items)
{
    Sequence sequence;
    for (const Item& item : items)
        sequence.push_back(recordOf(item));
    return sequence;
}

Record recordOf(const Span& span)
{
    Record record;
    record.setReal("length", span.length).setReal("load", span.loads.uniform);
    if (span.stiffness.size() == 1)
        record.setReal("stiffness", span.stiffness.front().value);
    else
        record.setSequence("stiffness", sequenceOf(span.stiffness));
    if (!span.loads.points.empty())
        record.setSequence("pointLoads", sequenceOf(span.loads.points));
    if (span.reinforcement > 0.0)
        record.setReal("reinforcement", span.reinforcement).setReal("depth", span.depth);
    return record;
}

// Until the new file is complete the old one stays.
bool replaceFile(const Record& record, const std::string& file)
{
    using Tools::File;
    const std::string fresh = file + ".new";
    if (writeRecord(record, fresh) && (!File::exists(file) || File::remove(file)))
        return File::rename(fresh, file);
    File::remove(fresh);
    return false;
}

}

bool writeModel(const Model& model, const std::string& file)
{
    Record record;
    setText(record, "version", CurrentModelVersion);
    setText(record, "title", model.title);
    if (model.stations > 0)
        record.setDecimal("stations", model.stations);
    Sequence spans;
    for (const Span& span : model.spans)
        spans.push_back(recordOf(span));
    record.setSequence("spans", spans).setSequence("supports", sequenceOf(model.supports));
    if (!model.train.empty())
        record.setSequence("train", sequenceOf(model.train));
    return replaceFile(record, file);
}

}
