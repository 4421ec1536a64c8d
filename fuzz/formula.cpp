// Formulas of any kind: the interpreter must agree with the rules word by word.

#include "tests/formula_reference.h"

#include <mdtools/formula_interpreter.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    text = text.c_str();
    const Tools::FormulaInterpreter interpreter;
    const double value = interpreter.value(text);
    // Bars are not among the rules.
    if (text.find_first_of("dD") != std::string::npos)
        return 0;
    const MdToolsTest::FormulaReference reference(text);
    const bool isSame =
        std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(reference.value()) ||
        (std::isnan(value) && std::isnan(reference.value()));
    if (!isSame || interpreter.tryValue(text).hasValue() != reference.isValid())
        std::abort();
    return 0;
}
