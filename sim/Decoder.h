// From instruction words to Ops.
#pragma once

#include "sim/Machine.h"

namespace maxq30 {

// The decoded form of the instruction that begins at a word inside the code memory. Words that mean
// nothing give an Op that reports an invalid instruction, a chain of prefix words that runs out of the
// memory one that reports a code error.
Op decodeAt(const Machine& machine, uint32_t word);

} // namespace maxq30
