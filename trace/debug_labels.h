#pragma once

#include <string>

// The labels of trace messages that the user has switched on.
namespace Tools::DebugLabels {

// Reads the settings at the first call, once for the process.
bool contains(const std::string& label);

// Forgets what the first call has read, and frees it unless some thread is using it just now.
void release();

}
