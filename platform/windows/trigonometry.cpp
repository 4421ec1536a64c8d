#include "platform/trigonometry.h"

#include <cmath>

#include <windows.h>

// MinGW's functions are the processor's instructions. Those round well, but take angles modulo a pi
// of 66 bits: the error is that of this pi times the number of turns. Where the result does not
// dwarf it, the system's run-time, which knows pi to the end, answers instead.
namespace Tools::Platform {

namespace {

using Function = double (*)(double);

// The system's function of this name; `other` where it has none.
Function find(const char* name, Function other)
{
    const HMODULE runTime = ::GetModuleHandleA("msvcrt.dll");
    const FARPROC address = runTime != nullptr ? ::GetProcAddress(runTime, name) : nullptr;
    return address != nullptr ? reinterpret_cast<Function>(reinterpret_cast<void*>(address))
                              : other;
}

// The pi's 66 bits are 13 more than a result has.
bool isPrecise(double result, double angle)
{
    return std::abs(result) >= std::abs(angle) * 0x1p-13;
}

}

double sine(double angle)
{
    static const Function accurate = find("sin", [](double x) { return std::sin(x); });
    const double result = std::sin(angle);
    return isPrecise(result, angle) ? result : accurate(angle);
}

double cosine(double angle)
{
    static const Function accurate = find("cos", [](double x) { return std::cos(x); });
    const double result = std::cos(angle);
    return isPrecise(result, angle) ? result : accurate(angle);
}

double tangent(double angle)
{
    static const Function accurate = find("tan", [](double x) { return std::tan(x); });
    const double result = std::tan(angle);
    return isPrecise(result, angle) && isPrecise(1.0 / result, angle) ? result : accurate(angle);
}

}
