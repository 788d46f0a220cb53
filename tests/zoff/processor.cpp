// The library leaves the processor to whoever links it. The tests take that of the product, just its two
// files.
#include "maxq30/cpu/ZOFFMAXQ30Insn.cpp"
#include "maxq30/cpu/ZOFFMAXQ30Reader.cpp"
