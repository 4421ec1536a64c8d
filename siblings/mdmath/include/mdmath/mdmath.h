#pragma once

// The part of the family's mathematics library that this one calls.
namespace Math {

// 180 degrees are pi.
double degreeToRadian(double degrees);

}
