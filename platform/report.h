#pragma once

// report.h - failures on the floors below trace/ that no result shows; trace/ answers it.
namespace Tools::Platform {

// Writes a line to the debug channel. The caller holds no lock, as the channel reads settings.
void report(const char* text);

}
