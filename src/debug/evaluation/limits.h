// What a display of variables and a cast may ask of us at most.
#pragma once

#include <cstddef>

namespace DisplayLimits {

constexpr int Nesting = 64;          // of arrays, structures and pointers in one another
constexpr int Items = 1'000'000;     // of one display
constexpr unsigned String = 65'536;  // bytes of one text
constexpr unsigned Register = 256;   // bytes of a value in registers
constexpr size_t TypePool = 1 << 18; // bytes of types that casts share
constexpr unsigned FilledAtOnce = 1024;

} // namespace DisplayLimits
