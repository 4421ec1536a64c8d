#pragma once

// platform/unload.h - the end of the library before the end of the process.
namespace Tools::Platform {

// Has `function` called when the library is unloaded while the process goes on; never at the end of
// the process, when its threads may be in the middle of anything. Several functions are called in
// reverse order.
void atUnload(void (*function)());

}
