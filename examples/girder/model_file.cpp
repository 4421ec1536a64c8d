#include "model_file.h"

#include "entries.h"
#include "file_text.h"
#include "names.h"
#include "number_text.h"
#include "record_text.h"
#include "value_limits.h"

namespace Girder {

namespace {

using Tools::Smart::Record;
using Tools::Smart::Sequence;

class ModelReader {
public:
    explicit ModelReader(Remarks& remarks) : m_remarks(remarks) {}

    Model read(const Record& record);

private:
    Span readSpan(const Record& record, const std::string& path);
    PointLoad readPointLoad(const Record& record, const std::string& path, double length);
    Support readSupport(const Record& record, const std::string& path, bool isEnd);

    // Calls `readOne(record, path, isEnd)` for each record of a list; the first and the last one
    // are its ends.
    template <class Function>
    void forEach(Entries& entries, const std::string& name, Function readOne)
    {
        const Sequence* list = entries.list(name);
        if (list == nullptr)
            return;
        std::size_t index = 0;
        for (const Record& record : *list) {
            const bool isEnd = index == 0 || index + 1 == list->size();
            readOne(record, entries.pathOf(name, index), isEnd);
            ++index;
        }
    }

    Remarks& m_remarks;
};

Model ModelReader::read(const Record& record)
{
    Model model;
    Entries entries(record, "", m_remarks);
    model.title = entries.text("title");
    if (entries.has("stations"))
        model.stations = entries.wholeNumber("stations", 1, MaximumStations);
    forEach(entries, "spans", [&](const Record& one, const std::string& path, bool) {
        model.spans.push_back(readSpan(one, path));
    });
    forEach(entries, "supports", [&](const Record& one, const std::string& path, bool isEnd) {
        model.supports.push_back(readSupport(one, path, isEnd));
    });
    if (model.spans.empty() && record.existsSequence("spans"))
        entries.error("spans", "must hold one span at least");
    if (record.existsSequence("supports") && model.supports.size() != model.spans.size() + 1) {
        entries.error("supports", "must hold one more than there are spans, " +
                                      std::to_string(model.spans.size() + 1) + ", but holds " +
                                      std::to_string(model.supports.size()));
    }
    entries.reportUnknown();
    return model;
}

Span ModelReader::readSpan(const Record& record, const std::string& path)
{
    Span span;
    Entries entries(record, path, m_remarks);
    span.length = entries.positive("length");
    span.stiffness = entries.positive("stiffness");
    span.loads.uniform = entries.number("load");
    if (entries.has("pointLoads")) {
        forEach(entries, "pointLoads", [&](const Record& one, const std::string& place, bool) {
            span.loads.points.push_back(readPointLoad(one, place, span.length));
        });
    }
    entries.reportUnknown();
    return span;
}

PointLoad ModelReader::readPointLoad(const Record& record, const std::string& path, double length)
{
    Entries entries(record, path, m_remarks);
    const PointLoad load = {entries.number("position"), entries.number("force")};
    if (load.position < 0.0 || load.position > length) {
        entries.error("position", "must lie within the span, from 0 to " + toText(length) +
                                      ", but is " + toText(load.position));
    }
    entries.reportUnknown();
    return load;
}

Support ModelReader::readSupport(const Record& record, const std::string& path, bool isEnd)
{
    Support support = isEnd ? Support::Hinged : Support::Interior;
    Entries entries(record, path, m_remarks);
    if (record.existsText("kind")) {
        const std::string name = entries.text("kind");
        const bool isKnown = supportFromName(name, support);
        if (!isKnown || isEnd == (support == Support::Interior)) {
            entries.error("kind", std::string("must be ") +
                                      (isEnd ? "\"hinged\" or \"fixed\" at an end"
                                             : "\"interior\" between two spans") +
                                      ", but is \"" + name + "\"");
        }
    } else {
        entries.text("kind");
    }
    entries.reportUnknown();
    return support;
}

}

Model readModel(const std::string& file, Remarks& remarks)
{
    std::string text;
    if (!readFile(file, text)) {
        remarks.error("", "cannot be read");
        return {};
    }
    Record record;
    if (!readRecord(text, record, remarks))
        return {};
    return ModelReader(remarks).read(record);
}

}
