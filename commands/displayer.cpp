#include <mdtools/displayer.h>

namespace Tools {

Displayer::Displayer() = default;
Displayer::Displayer(const Displayer&) = default;
Displayer& Displayer::operator=(const Displayer&) = default;
Displayer::~Displayer() = default;

void Displayer::refresh() {}

}
