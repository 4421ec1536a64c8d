#pragma once

namespace Girder {

// Stations are intervals per span in listings.
constexpr int DefaultStations = 10;
constexpr int MaximumStations = 1000;

// Decimals of the listed numbers.
constexpr int DefaultDecimals = 3;
constexpr int MaximumDecimals = 9;

}
