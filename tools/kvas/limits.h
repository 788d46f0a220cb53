// How far a source may go. All limits of the assembler stand here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvas::limits {

constexpr unsigned IncludeDepth = 32;
// Files opened by include and library directives, in all: two directives a file double at each level.
constexpr unsigned Includes = 2000;
constexpr size_t SourceBytes = size_t(256) << 20; // of all sources, each inclusion counted
constexpr unsigned Errors = 100;                  // reported before giving up

// Parentheses and operators in an expression, types within types. What reads executables keeps at most
// 100 operands on its stack, so an expression may not be deeper than that.
constexpr unsigned Nesting = 48;
constexpr unsigned ScopeDepth = 64;
constexpr size_t NameLength = 1000;
// Symbols defined through symbols.
constexpr unsigned SymbolChain = 200;

constexpr uint64_t SectionBytes = uint64_t(16) << 20;
constexpr size_t PoolBytes = 0xFFFFFF; // names and code bytes of one executable

// Rounds of layout after which short forms are given up, and after which it has failed.
constexpr unsigned PassesBeforeWidening = 40;
constexpr unsigned Passes = 100;

} // namespace kvas::limits
