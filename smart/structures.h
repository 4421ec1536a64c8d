#pragma once

#include "smart/index.h"

#include <mdtools/smart_record.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>
#include <vector>

namespace Tools::Smart {

// The structures of the records met in one input, as a tree: a node is a list of entries (names and
// types) in the order in which they were read, its children are the lists longer by one entry. The
// records of a sequence mostly look alike, so each entry read is a step to a node that is there
// already, and a complete record finds its index there, made once for all records of its structure.
//
// Node 0 is the empty list. The tree is limited in size, so that input without any regularity does
// not fill the memory with it: there is no step any more then.
class Structures {
public:
    struct Node {
        // The last entry of the list; the first of its cells.
        Shared<Name> name;
        Type type = Type::None;
        std::uint32_t cell = 0;
        std::uint32_t usedCells = 0;
        std::uint32_t length = 0;
        std::uint32_t parent = 0;
        // The start of the name once more, and how much of it that is.
        std::uint32_t startSize = 0;
        char start[16] = {};

        // What the next record will probably do, because the last one did: the step taken from
        // here, and the first step of a record that is part of this entry.
        std::uint32_t next = 0;
        std::uint32_t nestedFirst = 0;
        // The number of blanks before the name and the value, behind a text, and before a mark
        // after this entry.
        std::uint32_t nameBlanks = 0;
        std::uint32_t valueBlanks = 0;
        std::uint32_t textBlanks = 0;
        std::uint32_t markBlanks = 0;

        OwnerStock<Index> index;
    };

    Structures() : m_nodes(1) {}

    // The expectations may be changed.
    Node& operator[](std::uint32_t node) { return m_nodes[node]; }

    // The node behind `node` by an entry of that name and type, where `expected` is tried first. 0
    // if there is none, because the name is in the list already or the tree is full.
    std::uint32_t step(std::uint32_t node, std::uint32_t expected, std::string_view name,
                       Type type);

    // The index of the records that end at this node.
    Shared<Index> indexOf(std::uint32_t node);

private:
    static constexpr std::size_t MaxNodes = 16384;
    static constexpr std::uint32_t MaxLength = 1024;

    using Step = std::tuple<std::uint32_t, Type, std::string_view>;

    bool isStep(std::uint32_t node, std::string_view name, Type type) const;
    bool contains(std::uint32_t node, std::string_view name) const;
    std::uint32_t add(std::uint32_t parent, std::string_view name, Type type);

    std::vector<Node> m_nodes;
    // Not hashed, so that no input can make the search long. The names are those of the nodes.
    std::map<Step, std::uint32_t> m_steps;
};

}
