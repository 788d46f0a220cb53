// What the cache of open files needs of the debugger: how the index over a module's symbols and lines is
// made and ended. The debugger's side keeps the record, and the program installs it before the first index
// is asked for.
#pragma once

#include "support/Installed.h"

class Path;
class SymbolicDebug;
class ZOFFModule;

struct ZOFFDebugIndex {
    // The index of a module, which outlives it.
    SymbolicDebug* (*make)(const Path& path, ZOFFModule* module);
    void (*destroy)(SymbolicDebug* index);

    static void install(const ZOFFDebugIndex& index) { s_current.install(index); }
    // The installed one. That there is none is a fault of the program, which ends here.
    static const ZOFFDebugIndex& current() { return s_current.get(); }

private:
    static Installed<const ZOFFDebugIndex> s_current;
};
