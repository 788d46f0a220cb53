// What an expression may ask of us at most. Each limit ends in a message instead of a crash.
#pragma once

#include <cstdint>

// Levels of operators, parentheses and casts within each other, each counted by the rules that read it; a
// pair of parentheses is two.
constexpr int EXPRESSION_MAXIMUM_DEPTH = 512;
// Characters of one text.
constexpr int EXPRESSION_MAXIMUM_LENGTH = 1 << 20;
// Nodes that one evaluation visits. A text within the length stays below it unless it mentions its own
// parts twice in one another, as `a[b += 1] += 1` does.
constexpr uint64_t EXPRESSION_MAXIMUM_COST = 1 << 21;
// Digits that a printed value is filled up to.
constexpr unsigned EXPRESSION_MAXIMUM_DIGITS = 512;
