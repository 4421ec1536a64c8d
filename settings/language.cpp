#include <mdtools/language.h>

#include "platform/locale.h"

namespace Tools {

namespace {

// As Windows numbers primary languages; the platform layer translates other systems' names.
constexpr unsigned Czech = 5;
constexpr unsigned German = 7;
constexpr unsigned Slovak = 27;

}

Language::~Language() = default;

bool Language::isGerman() const
{
    return Platform::primaryLanguage() == German;
}

bool Language::isCzech() const
{
    return Platform::primaryLanguage() == Czech;
}

bool Language::isSlovak() const
{
    return Platform::primaryLanguage() == Slovak;
}

}
