// What an XML file and the macros in it may ask of us at most. Each limit is far above what people write by
// hand or a workbench writes for them, and ends in a message instead of a crash or an endless run.
#pragma once

#include <cstddef>

namespace XMLLimits {

constexpr unsigned ElementDepth = 1000;        // elements inside each other, in a file and after includes
constexpr size_t DocumentBytes = 512u << 20;   // one XML file
constexpr unsigned IncludeDepth = 100;         // include and Import, each inside the next
constexpr unsigned Includes = 1000;            // files that one document includes or imports in all
constexpr unsigned ForRounds = 200000;         // rounds of all `for` elements of one document
constexpr size_t ProducedBytes = 128u << 20;   // what `for`, `include` and expansion add to one document
constexpr unsigned MacroPasses = 100;          // rescans of one text
constexpr unsigned MacroTextLength = 1u << 20; // characters of one expanded text

} // namespace XMLLimits
