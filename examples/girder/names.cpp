#include "names.h"

#include <array>
#include <utility>

namespace Girder {

namespace {

constexpr std::array<std::pair<Support, const char*>, 3> supportNames = {
    {{Support::Hinged, "hinged"}, {Support::Fixed, "fixed"}, {Support::Interior, "interior"}}};

}

std::string nameOf(Support support)
{
    for (const auto& [kind, name] : supportNames) {
        if (kind == support)
            return name;
    }
    return "";
}

bool supportFromName(const std::string& name, Support& support)
{
    for (const auto& [kind, text] : supportNames) {
        if (name == text) {
            support = kind;
            return true;
        }
    }
    return false;
}

}
