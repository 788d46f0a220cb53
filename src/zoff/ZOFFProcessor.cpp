#include "zoff/ZOFFProcessor.h"

#include <cassert>
#include <cstdlib>

const ZOFFProcessor* ZOFFProcessor::s_current = nullptr;

const ZOFFProcessor& ZOFFProcessor::missing()
{
    assert(!"no ZOFFProcessor record is installed: ZOFFProcessor::install() comes first");
    abort();
}
