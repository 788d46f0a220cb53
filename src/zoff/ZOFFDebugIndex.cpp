#include "zoff/ZOFFDebugIndex.h"

constinit Installed<const ZOFFDebugIndex>
    ZOFFDebugIndex::s_current("the debugger's index, a ZOFFDebugIndex,");
