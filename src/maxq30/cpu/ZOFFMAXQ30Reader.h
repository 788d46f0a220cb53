// The reader of object files for MAXQ30.
#pragma once

#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFReader.h"

class ZOFFMAXQ30Reader : public ZOFFReader {
public:
    using ZOFFReader::ZOFFReader;

protected:
    ZOFFProcessorInsn* makeInsn() override;
};
