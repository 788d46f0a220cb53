// The library leaves the processor to whoever links it. The tests take that of the product, just its two
// files.
#include "maxq30/ZOFFMAXQ30Insn.cpp"
#include "maxq30/ZOFFMAXQ30Reader.cpp"
