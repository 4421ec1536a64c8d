#pragma once

namespace Tools {

struct Engineering {
    double mantissa;
    int exponent;
};

// A positive, finite number by a power of ten. The exponent is the greatest multiple of three that
// is not above the floor of log10(magnitude), the logarithm being the correctly rounded double: a
// number so close below 1000 that its logarithm rounds to 3 belongs to 3. The mantissa comes out of
// one division by the double nearest to the power; only the smallest numbers, whose power would be
// subnormal, take two.
Engineering toEngineering(double magnitude);

}
