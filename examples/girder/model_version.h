#pragma once

#include <mdtools/version_text.h>

namespace Girder {

// Versions of the model format. Files of older ones are read; what is newer than a file's version
// is refused in it.
constexpr const char* FirstModelVersion = "1.0";
// Haunched spans, reinforcement, trains.
constexpr const char* CurrentModelVersion = "1.1";

inline Tools::VersionText::ValidVersionTexts knownModelVersions()
{
    return {FirstModelVersion, CurrentModelVersion};
}

}
