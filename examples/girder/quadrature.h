#pragma once

#include <array>

namespace Girder {

// The integral of `function` from a to b by the Gauss rule of eight points: exact for polynomials
// up to degree 15, and exact to rounding for a polynomial divided by a straight line whose end
// values differ by no more than half.
template <class Function>
double integral(double a, double b, Function function)
{
    struct Point {
        double position;
        double weight;
    };
    static constexpr std::array<Point, 4> points = {{{0.1834346424956498, 0.3626837833783620},
                                                     {0.5255324099163290, 0.3137066458778873},
                                                     {0.7966664774136267, 0.2223810344533745},
                                                     {0.9602898564975363, 0.1012285362903763}}};
    const double middle = 0.5 * (a + b);
    const double half = 0.5 * (b - a);
    double sum = 0.0;
    for (const Point& point : points) {
        const double offset = half * point.position;
        sum += point.weight * (function(middle - offset) + function(middle + offset));
    }
    return half * sum;
}

}
