#include "script/engine/ESCompiler.h"
#include "script/engine/ESOpcodes.h"
#include "script/engine/ESStringPool.h"

QString ESCompiler::printInsn(const ESCode* code, int offset)
{
    uint8_t op = code->code[size_t(offset)];
    if (op >= VM_OpcodeCount)
        return QStringLiteral("%1 ?%2").arg(offset).arg(op);
    QString text = QStringLiteral("%1 %2").arg(offset, 5).arg(QLatin1String(OpcodeTable[op].mnemonic));
    auto operand = [&](int at) { return int(code->operandAt(offset + at)); };
    auto name = [&] { return ESStringPool::get(code->indexOf(operand(1)))->text(); };
    switch (ESCode::operands(op)) {
    case ESOperands::None: return text;
    case ESOperands::Number: return text + QStringLiteral(" %1").arg(code->numbers[size_t(operand(1))]);
    case ESOperands::String: return text + QStringLiteral(" \"%1\"").arg(name());
    case ESOperands::NameCount: return text + QStringLiteral(" \"%1\" %2").arg(name()).arg(operand(3));
    case ESOperands::SlotCount: return text + QStringLiteral(" %1 %2").arg(operand(1)).arg(operand(3));
    case ESOperands::Flag: return text + QStringLiteral(" %1").arg(code->code[size_t(offset) + 1]);
    case ESOperands::Function: return text + QStringLiteral(" %1").arg(code->indexOf(operand(1)));
    case ESOperands::Slot:
    case ESOperands::Count:
    case ESOperands::Target: return text + QStringLiteral(" %1").arg(operand(1));
    }
    return text;
}

QString ESCompiler::dumpcode(const ESCode* code)
{
    QString text;
    int offset = 0;
    while (offset < code->length()) {
        text += printInsn(code, offset) + QLatin1Char('\n');
        offset += ESCode::size(code->code[size_t(offset)]);
    }
    return text;
}
