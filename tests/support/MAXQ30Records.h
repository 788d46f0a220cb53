// Tests that read executables include this: the processor's record is installed before they begin.
#pragma once

#include "maxq30/cpu/MAXQ30Processor.h"
#include "zoff/ZOFFProcessor.h"

inline const bool MAXQ30RecordsInstalled = (ZOFFProcessor::install(MAXQ30Processor), true);
