// The reader of object files for MAXQ30.
#pragma once

#include "zoff/ZOFFReader.h"

class ZOFFMAXQ30Reader : public ZOFFReader {
public:
    using ZOFFReader::ZOFFReader;
    const char* processorName() const override { return "MAXQ30"; }

protected:
    ZOFFProcessorInsn* makeInsn() override;
};
