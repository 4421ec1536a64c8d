#include "model_file.h"

#include "entries.h"
#include "file_text.h"
#include "model_check.h"
#include "model_version.h"
#include "names.h"
#include "number_text.h"
#include "record_text.h"
#include "remark_text.h"
#include "value_limits.h"

namespace Girder {

namespace {

using Tools::Smart::Record;
using Tools::Smart::Sequence;

class ModelReader {
public:
    explicit ModelReader(Remarks& remarks)
        : m_remarks(remarks), m_version(knownModelVersions(), CurrentModelVersion)
    {}

    Model read(const Record& record);

private:
    void readVersion(Entries& entries);
    // For entries that came with the current version.
    void needCurrentVersion(Entries& entries, const std::string& name);
    void readSpans(Entries& entries, Model& model);
    void readSupports(Entries& entries, Model& model);
    Span readSpan(const Record& record, const std::string& path);
    std::vector<StiffnessPoint> readStiffness(Entries& entries, double length);
    PointLoad readPointLoad(const Record& record, const std::string& path, double length);
    Axle readAxle(const Record& record, const std::string& path);
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
    Tools::VersionText m_version;
};

Model ModelReader::read(const Record& record)
{
    Model model;
    Entries entries(record, "", m_remarks);
    readVersion(entries);
    model.title = entries.text("title");
    if (entries.has("stations"))
        model.stations = entries.wholeNumber("stations", 1, MaximumStations);
    readSpans(entries, model);
    readSupports(entries, model);
    if (entries.has("train")) {
        needCurrentVersion(entries, "train");
        forEach(entries, "train", [&](const Record& one, const std::string& path, bool) {
            model.train.push_back(readAxle(one, path));
        });
    }
    entries.reportUnknown();
    return model;
}

void ModelReader::readSpans(Entries& entries, Model& model)
{
    forEach(entries, "spans", [&](const Record& one, const std::string& path, bool) {
        model.spans.push_back(readSpan(one, path));
    });
    if (model.spans.empty() && entries.isList("spans"))
        entries.error("spans", "must hold one span at least");
}

void ModelReader::readSupports(Entries& entries, Model& model)
{
    forEach(entries, "supports", [&](const Record& one, const std::string& path, bool isEnd) {
        model.supports.push_back(readSupport(one, path, isEnd));
    });
    if (entries.isList("supports") && !model.spans.empty() &&
        model.supports.size() != model.spans.size() + 1) {
        entries.error("supports", "must hold one more than there are spans, " +
                                      std::to_string(model.spans.size() + 1) + ", but holds " +
                                      std::to_string(model.supports.size()));
    }
}

void ModelReader::readVersion(Entries& entries)
{
    const std::string version = entries.text("version");
    if (version.empty())
        return;
    if (!m_version.isValid(version)) {
        entries.error("version", "is not known to this program, which reads up to " +
                                     std::string(CurrentModelVersion) + ": \"" +
                                     abridged(version, LongestWord) + "\"");
        return;
    }
    m_version.setText(version);
    if (m_version.isLessThan(CurrentModelVersion)) {
        m_remarks.info(entries.pathOf("version"),
                       "the format is now at version " + std::string(CurrentModelVersion));
    }
}

void ModelReader::needCurrentVersion(Entries& entries, const std::string& name)
{
    if (m_version.isLessThan(CurrentModelVersion)) {
        entries.error(name, "needs version " + std::string(CurrentModelVersion) +
                                " of the format, but the model has " + m_version.getText());
    }
}

Span ModelReader::readSpan(const Record& record, const std::string& path)
{
    Span span;
    Entries entries(record, path, m_remarks);
    span.length = entries.positive("length");
    span.stiffness = readStiffness(entries, span.length);
    span.loads.uniform = entries.number("load");
    if (entries.has("pointLoads")) {
        forEach(entries, "pointLoads", [&](const Record& one, const std::string& loadPath, bool) {
            span.loads.points.push_back(readPointLoad(one, loadPath, span.length));
        });
    }
    if (entries.has("reinforcement") || entries.has("depth")) {
        needCurrentVersion(entries, "reinforcement");
        span.reinforcement = entries.positive("reinforcement");
        span.depth = entries.positive("depth");
    }
    entries.reportUnknown();
    return span;
}

std::vector<StiffnessPoint> ModelReader::readStiffness(Entries& entries, double length)
{
    if (!entries.isList("stiffness"))
        return {{0.0, entries.positive("stiffness")}};
    needCurrentVersion(entries, "stiffness");
    std::vector<StiffnessPoint> points;
    forEach(entries, "stiffness", [&](const Record& one, const std::string& path, bool) {
        Entries point(one, path, m_remarks);
        points.push_back({point.within("position", length), point.positive("value")});
        if (points.size() > 1 && points.back().position <= points[points.size() - 2].position)
            point.error("position", "must lie behind that of the point before");
        point.reportUnknown();
    });
    if (points.empty())
        entries.error("stiffness", "must hold one point at least");
    return points;
}

PointLoad ModelReader::readPointLoad(const Record& record, const std::string& path, double length)
{
    Entries entries(record, path, m_remarks);
    const PointLoad load = {entries.within("position", length), entries.number("force")};
    entries.reportUnknown();
    return load;
}

Axle ModelReader::readAxle(const Record& record, const std::string& path)
{
    Entries entries(record, path, m_remarks);
    const Axle axle = {entries.number("distance"), entries.number("force")};
    if (axle.distance < 0.0)
        entries.error("distance", "must not be negative, but is " + toText(axle.distance));
    entries.reportUnknown();
    return axle;
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
                                      ", but is \"" + abridged(name, LongestWord) + "\"");
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
    Model model = ModelReader(remarks).read(record);
    if (!remarks.hasError())
        checkModel(model, remarks);
    return model;
}

}
