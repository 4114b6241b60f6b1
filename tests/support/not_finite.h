#pragma once

#include <limits>

// The macros of these names are floats, and some compilers warn where one becomes a double.
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
