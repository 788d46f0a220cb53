// Evaluating a script on behalf of a program: warnings go to standard error, once each, and failures of
// the machine become the program's own exception.
#pragma once

#include "script/engine/ESContext.h"

// The completion, which may be a thrown value. Throws HException for what no script can catch, and passes on
// what a native threw. `file` is the name for messages.
ESCompletion evaluateForHost(ESContext* context, const QString& text, const QString& file);

// "warning: FILE:LINE: TEXT" for each warning that the context has gathered.
void printScriptWarnings(ESContext* context);
