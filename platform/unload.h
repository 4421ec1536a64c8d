#pragma once

// platform/unload.h - the end of the library, before that of the process or with it.
namespace Tools::Platform {

// Has `function` called when the library is unloaded, and possibly at the end of the process, too,
// which processEnds() tells apart. Several functions are called in reverse order.
void atUnload(void (*function)());

// For such a function: whether it is the process that ends. Its other threads may be in the middle
// of anything then, or gone, so what they use must stay as it is.
bool processEnds();

}
