#include <mdtools/displayer.h>

namespace Tools {

Displayer::~Displayer() = default;

void Displayer::refresh() {}

}
