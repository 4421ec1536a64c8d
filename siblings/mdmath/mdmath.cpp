#include <mdmath/mdmath.h>

namespace Math {

double degreeToRadian(double degrees)
{
    return degrees * (3.14159265358979323846 / 180.0);
}

}
