#include "maxq30/cpu/ZOFFMAXQ30Reader.h"

#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFReaderInline.h" // the steps of the reader

ZOFFProcessorInsn* ZOFFMAXQ30Reader::makeInsn()
{
    auto opcode = uint64_t(popConst());
    return new ZOFFMAXQ30Insn(opcode, popExpr(true));
}
