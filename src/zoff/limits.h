// What a module may ask of this machine. A file beyond these is refused as a bad object file.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZOFFLimits {

constexpr int StackEntries = 100; // of the reader's operand stack
constexpr uint64_t StringPoolBytes = 0xFFFFFF;
constexpr int MaxNesting = 10'000;           // of expressions, types and scopes
constexpr uint32_t ExpressionNodes = 30'000; // of one expression, counted as a tree
constexpr int EvaluationSteps = 100'000;     // of one evaluation, through all symbols
constexpr int SymbolNesting = 1'000;         // symbols whose values mention one another
constexpr int InitNesting = 100;             // sections that are filled from one another
constexpr int64_t CodeBytes = 64 << 20;      // of all items of a module, and of one load file
constexpr int TypeNameParts = 10'000;        // types mentioned in one printed name
constexpr int TypeNameNesting = 1'000;       // of types in one printed name
constexpr size_t TypeNameLength = 65'536;    // of a printed name; what is longer ends in "..."
// Aliases and markers have numbers up to the file's size in bytes, or up to this one in a small file.
constexpr uint64_t NumbersFree = 65'536;
constexpr int64_t NameLength = 65'536;     // of one name in a file
constexpr int64_t NameBytesFree = 1 << 20; // of all names of a file: this and so much a file byte
constexpr int64_t NameBytesPerByte = 16;
constexpr int64_t PointerStepsFree = 1 << 26; // along chains of pointers: this and so many a file byte
constexpr int64_t PointerStepsPerByte = 16;

} // namespace ZOFFLimits
