#pragma once

// platform/trigonometry.h - the circular functions of an angle in radians, accurate for every one.
namespace Tools::Platform {

double sine(double angle);
double cosine(double angle);
double tangent(double angle);

}
