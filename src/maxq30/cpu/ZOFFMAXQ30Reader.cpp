#include "maxq30/cpu/ZOFFMAXQ30Reader.h"

#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "zoff/ZOFFReaderInline.h"

ZOFFProcessorInsn* ZOFFMAXQ30Reader::makeInsn()
{
    auto opcode = uint64_t(popConst());
    return new ZOFFMAXQ30Insn(opcode, popExpr(true));
}

ZOFFProcessorInsn* newZOFFInsn(uint64_t opcode, ZOFFExpr* operand)
{
    return new ZOFFMAXQ30Insn(opcode, operand);
}

ZOFFReader* newZOFFReader(HFileBlocks* input, bool keepLoci)
{
    return new ZOFFMAXQ30Reader(input, keepLoci);
}
