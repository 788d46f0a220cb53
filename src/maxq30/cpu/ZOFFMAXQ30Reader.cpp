#include "maxq30/cpu/ZOFFMAXQ30Reader.h"

#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "zoff/ZOFFReaderInline.h"

ZOFFProcessorInsn* ZOFFMAXQ30Reader::makeInsn()
{
    auto opcode = uint64_t(popConst());
    return new ZOFFMAXQ30Insn(opcode, popExpr(true));
}
