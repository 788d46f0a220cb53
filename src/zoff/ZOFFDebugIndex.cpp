#include "zoff/ZOFFDebugIndex.h"

#include <cassert>
#include <cstdlib>

const ZOFFDebugIndex* ZOFFDebugIndex::s_current = nullptr;

const ZOFFDebugIndex& ZOFFDebugIndex::missing()
{
    assert(!"no ZOFFDebugIndex record is installed: ZOFFDebugIndex::install() comes first");
    abort();
}
