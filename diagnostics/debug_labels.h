#pragma once

#include <string>

// The labels of trace messages that the user has switched on.
namespace Tools::DebugLabels {

// Reads the settings at the first call, once for the process.
bool contains(const std::string& label);

// Frees what the first call has read; no thread is using it any more.
void release();

}
