// MAXQ30 as the object format asks for it. A program that reads MAXQ30 files begins with
// ZOFFProcessor::install(MAXQ30Processor).
#pragma once

#include "zoff/ZOFFProcessor.h"

extern const ZOFFProcessor MAXQ30Processor;
