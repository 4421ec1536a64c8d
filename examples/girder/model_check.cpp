#include "model_check.h"

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

// Neighbouring spans of one girder seldom differ by more.
constexpr double GreatestStiffnessRatio = 100.0;

std::string itemOf(const std::string& list, std::size_t index)
{
    return list + "[" + std::to_string(index + 1) + "]";
}

bool isUnloaded(const Model& model)
{
    return std::all_of(model.spans.begin(), model.spans.end(), [](const Span& span) {
        return span.loads.uniform == 0.0 && span.loads.points.empty();
    });
}

void checkPointLoads(const Span& span, const std::string& path, Remarks& remarks)
{
    const std::vector<PointLoad>& points = span.loads.points;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const bool isTwin =
            points[i].position == points[i - 1].position && points[i].force == points[i - 1].force;
        if (isTwin)
            remarks.warning(path + "." + itemOf("pointLoads", i), "is the same as the one before");
    }
}

void checkStiffness(const Span& left, const Span& right, const std::string& path, Remarks& remarks)
{
    const auto [least, greatest] =
        std::minmax(left.stiffness.back().value, right.stiffness.front().value);
    if (greatest > GreatestStiffnessRatio * least) {
        remarks.warning(path + ".stiffness",
                        "differs from that of the span before by more than a factor of 100");
    }
}

}

void checkModel(const Model& model, Remarks& remarks)
{
    double length = 0.0;
    for (std::size_t i = 0; i < model.spans.size(); ++i) {
        length += model.spans[i].length;
        const std::string path = itemOf("spans", i);
        checkPointLoads(model.spans[i], path, remarks);
        if (i > 0)
            checkStiffness(model.spans[i - 1], model.spans[i], path, remarks);
    }
    if (!std::isfinite(length))
        remarks.error("spans", "are too long together to compute with");
    if (isUnloaded(model))
        remarks.warning("spans", "carry no load at all");
}

}
