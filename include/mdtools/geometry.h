#pragma once

namespace Tools {

// The edges of a rectangle, as windows have them. Nothing keeps `left` below `right` or `top`
// below `bottom`. A plain value, like Size.
template <class T>
struct Rectangle {
    T left{};
    T top{};
    T right{};
    T bottom{};

    friend bool operator==(const Rectangle& a, const Rectangle& b) = default;
};

// How far something extends, in the units of the caller.
template <class T>
struct Size {
    T width{};
    T height{};

    friend bool operator==(const Size& a, const Size& b) = default;
};

}
