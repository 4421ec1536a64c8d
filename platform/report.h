#pragma once

// report.h - what lower floors have to say that no result tells; trace/ answers it.
namespace Tools::Platform {

// Writes a line to the debug channel. The caller holds no lock, as the channel reads settings.
void report(const char* text);

}
