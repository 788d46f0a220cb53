#include "zoff/ZOFFProcessor.h"

constinit Installed<const ZOFFProcessor>
    ZOFFProcessor::s_current("the processor of object files, a ZOFFProcessor,");
