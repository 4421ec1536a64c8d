#include <mdtools/argument_keeper.h>

#include <utility>

namespace Tools {

ArgumentKeeper::ArgumentKeeper(std::vector<std::string> arguments)
    : m_arguments(std::move(arguments))
{
    // The pointers lead into buffers of their own, so that writing through them spares the texts.
    m_buffers.reserve(m_arguments.size());
    m_vector.reserve(m_arguments.size() + 1);
    for (const std::string& argument : m_arguments) {
        m_buffers.emplace_back(argument.c_str(), argument.c_str() + argument.size() + 1);
        m_vector.push_back(m_buffers.back().data());
    }
    m_vector.push_back(nullptr);
}

ArgumentKeeper::~ArgumentKeeper() = default;

int ArgumentKeeper::getArgC() const
{
    return static_cast<int>(m_arguments.size());
}

char** ArgumentKeeper::getArgV()
{
    return m_vector.data();
}

}
