#include "maxq30/cpu/MAXQ30Processor.h"

#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HByteStream.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFReader.h"

constinit const ZOFFProcessor MAXQ30Processor = {
    .newReader = [](HFileBlocks* input, bool keepLoci) -> std::unique_ptr<ZOFFReader> {
        return std::make_unique<ZOFFMAXQ30Reader>(input, keepLoci);
    },
    .newInsn = [](uint64_t opcode, ZOFFExpr* operand) -> ZOFFProcessorInsn* {
        return new ZOFFMAXQ30Insn(opcode, operand);
    },
    .registerName = decodeModule,
    .addressSize = 2,
    .bigEndian = false,
};
