#pragma once

#include <string>

// Libraries that are loaded by name while the program runs.
namespace Tools::Platform {

using Library = void*;
// Of whatever type it really is.
using Function = void (*)();

// Null if there is none, or it is none. The library stays loaded.
Library loadLibrary(const std::string& name);

// Null if the library exports no such function.
Function findFunction(Library library, const std::string& name);

}
