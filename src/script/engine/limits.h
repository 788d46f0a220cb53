// All limits of the script engine.
#pragma once

namespace ESLimits {

// Values on the machine's stack: arguments, locals and temporaries of all running functions.
constexpr int StackSlots = 1024;
// Slots behind the last one that natives may still write a result to.
constexpr int StackMargin = 16;
// Script functions called by natives that were called by script functions, and so on. Each level
// takes host stack, so this is bounded by itself.
constexpr int NativeNesting = 100;
// Depth of nested expressions, statements and functions in a source text.
constexpr int SourceNesting = 1000;
// Bytes of one function's code; jump targets and chain links are 16 bits wide.
constexpr int CodeBytes = 65535;
// String operands from this value on are indices into the code's table of far names, lower ones are
// pool indices. Function operands likewise.
constexpr int NearOperands = 0xC000;
// UTF-16 units of one string.
constexpr int StringLength = 1 << 26;
// Elements of an array that a host buffer is made from.
constexpr unsigned BridgeElements = 1u << 26;
// What strings, and the objects of one context, may take together.
constexpr unsigned long MemoryBytes = 1ul << 30;
// Numbers below this are enumerated in the order in which they were first met as names.
constexpr unsigned OrderedNumbers = 1u << 22;
// Elements with indices below this are held side by side however few there are.
constexpr unsigned DenseElements = 1024;
// Decimal strings kept in a table once they are interned; the first ReadyNumbers are made at start.
constexpr int NumberStrings = 65536;
constexpr int ReadyNumbers = 100;
// Jumps and calls between two questions to an owner that asked to be asked now and then.
constexpr int HookStride = 1024;

} // namespace ESLimits
