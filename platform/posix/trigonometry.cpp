#include "platform/trigonometry.h"

#include <cmath>

namespace Tools::Platform {

double sine(double angle)
{
    return std::sin(angle);
}

double cosine(double angle)
{
    return std::cos(angle);
}

double tangent(double angle)
{
    return std::tan(angle);
}

}
