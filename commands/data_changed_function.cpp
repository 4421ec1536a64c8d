#include <mdtools/data_changed.h>

#include <utility>

// Not beside the manager: the compiler would take this handler for the likely one there and test
// for it before every call.
namespace Tools {

DataChangedFunction::DataChangedFunction(std::function<void(const DataChangedArgument*)> function)
    : m_function(std::move(function))
{}

DataChangedFunction::~DataChangedFunction() = default;

void DataChangedFunction::dataChanged(const DataChangedArgument* argument)
{
    if (m_function)
        m_function(argument);
}

}
