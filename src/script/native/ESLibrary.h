// The objects that exist in every context before any script runs. Whoever makes a context has it filled here.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"

namespace ESLibrary {

// Builds the context: its classes, its stack, and all native objects. A null global object has one made.
void mkexec(ESObject* global, ESContext* context);

} // namespace ESLibrary
