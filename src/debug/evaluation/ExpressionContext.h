// Where the names of an expression are looked up: in a call frame, at a source position, or with neither
// among the public symbols.
#pragma once

#include "support/Path.h"

class Frame;

struct ExpressionContext {
    Frame* frame = nullptr;
    Path file;
    int line = 0;
    bool readOnly = false; // an assignment is refused
};
