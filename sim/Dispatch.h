// Which operation executes an instruction. A transport is chosen by the kinds of its two ends; the
// operations on the accumulator and on single bits have tables of their own. `words` is the length of the
// instruction, for which the short ones are made specially.
#pragma once

#include "sim/Instructions.h"
#include "sim/Machine.h"

namespace maxq30 {

Op::Run transport(SourceKind, DestinationKind, unsigned words);
// A jump to a place inside the code memory, which lies `imm` words on; its source is Op::FixedTarget. The
// kind is one of MAXQ30_JUMPS.
Op::Run fixedJump(DestinationKind, unsigned words);
// Sets or clears one bit of a place; null when the kind is not one of MAXQ30_PLACES.
Op::Run bitChange(DestinationKind);
// By the indexes of destination and source in module 10; null for what means nothing. The bit
// operations ignore the source index here.
Op::Run accumulatorOperation(unsigned destinationIndex, unsigned sourceIndex, unsigned words);
Op::Run bitOperation(unsigned destinationIndex, unsigned words);

} // namespace maxq30
