// What an expression may ask of us at most. Each limit ends in a message instead of a crash.
#pragma once

// Levels of operators, parentheses and casts within each other.
constexpr int EXPRESSION_MAXIMUM_DEPTH = 256;
