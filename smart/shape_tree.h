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

// Hidden classes ("shapes") of the records met in one input. A shape is a list of entries (names
// and types) in the order in which they were read; a transition leads to the shape longer by one
// entry, so that all of them are a tree. The records of a sequence mostly look alike: each entry
// read is then a transition that is there already, and a complete record finds its index at its
// shape, made once for all records of it.
//
// Shape 0 is the empty list. The tree is limited in size, so that input without any regularity does
// not fill the memory with it: there are no new transitions then.
class ShapeTree {
public:
    struct Shape {
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

        // What the next record will probably do, because the last one did (an inline cache): the
        // transition taken from here, and the first one of a record that is part of this entry.
        std::uint32_t next = 0;
        std::uint32_t nestedFirst = 0;
        // The number of blanks before the name and the value, after a text, and before a mark after
        // this entry.
        std::uint32_t nameBlanks = 0;
        std::uint32_t valueBlanks = 0;
        std::uint32_t textBlanks = 0;
        std::uint32_t markBlanks = 0;

        OwnerStock<Index> index;
    };

    ShapeTree() : m_shapes(1) {}

    // The predictions may be changed. A reference lasts until the next transition.
    Shape& operator[](std::uint32_t shape) { return m_shapes[shape]; }

    // The shape after `shape` by an entry of that name and type, where `expected` is tried first. 0
    // if there is none, because the name is in the list already or the tree is full.
    std::uint32_t transition(std::uint32_t shape, std::uint32_t expected, std::string_view name,
                             Type type);

    // The index of the records of this shape.
    Shared<Index> indexOf(std::uint32_t shape);

private:
    static constexpr std::size_t MaxShapes = 16384;
    static constexpr std::uint32_t MaxLength = 1024;

    using Transition = std::tuple<std::uint32_t, Type, std::string_view>;

    bool isReachedBy(std::uint32_t shape, std::string_view name, Type type) const;
    bool contains(std::uint32_t shape, std::string_view name) const;
    std::uint32_t add(std::uint32_t parent, std::string_view name, Type type);

    std::vector<Shape> m_shapes;
    // Not hashed, so that no input can make the search long. The names are those of the shapes.
    std::map<Transition, std::uint32_t> m_transitions;
};

}
