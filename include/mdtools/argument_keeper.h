#pragma once

#include <mdtools/export.h>

#include <string>
#include <vector>

namespace Tools {

// A list of texts as the argument count and vector of a C entry point. The entry point may write
// into the arguments and rearrange the vector; the keeper's own texts stay as they are. A keeper,
// and what the entry point does with its vector, belong to one thread at a time.
class MDTOOLS_API ArgumentKeeper {
public:
    explicit ArgumentKeeper(std::vector<std::string> arguments);
    ~ArgumentKeeper();
    ArgumentKeeper(const ArgumentKeeper&) = delete;
    ArgumentKeeper& operator=(const ArgumentKeeper&) = delete;

    int getArgC() const;
    // getArgC() texts and a null after them, valid as long as the keeper lives.
    char** getArgV();

private:
    std::vector<std::string> m_arguments;
    std::vector<std::vector<char>> m_buffers;
    std::vector<char*> m_vector;
};

}
