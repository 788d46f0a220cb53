#include "script/engine/ESCode.h"

#include "script/engine/ESThread.h"
#include "script/engine/limits.h"

#include <bit>

ESCode::ESCode() = default;
ESCode::~ESCode() = default;

int ESCode::addNumber(double number)
{
    // By the bits, so that 0 and -0 stay apart and a NaN is found.
    uint64_t bits = std::bit_cast<uint64_t>(number);
    for (size_t i = 0; i < numbers.size(); ++i)
        if (std::bit_cast<uint64_t>(numbers[i]) == bits)
            return int(i);
    if (numbers.size() >= size_t(ESLimits::CodeBytes))
        return -1;
    numbers.push_back(number);
    return int(numbers.size()) - 1;
}

int ESCode::operandFor(int index)
{
    if (index < ESLimits::NearOperands)
        return index;
    size_t at = 0;
    while (at < far.size() && far[at] != index)
        ++at;
    if (at == far.size()) {
        if (far.size() > size_t(0xFFFF - ESLimits::NearOperands))
            return -1;
        far.push_back(index);
    }
    return ESLimits::NearOperands + int(at);
}

int ESCode::indexOf(int operand) const
{
    return operand < ESLimits::NearOperands ? operand : far[size_t(operand - ESLimits::NearOperands)];
}

void ESCode::emit(uint8_t byte, int line)
{
    if (code.size() == code.capacity()) {
        size_t capacity = code.capacity() ? code.capacity() * 2 : 200;
        code.reserve(capacity);
        lines.reserve(capacity);
    }
    code.push_back(byte);
    lines.push_back(line);
}

void ESCode::emitOperand(int operand, int line)
{
    emit(uint8_t(operand >> 8), line);
    emit(uint8_t(operand), line);
}

void ESCode::setOperand(int offset, int operand)
{
    code[size_t(offset)] = uint8_t(operand >> 8);
    code[size_t(offset) + 1] = uint8_t(operand);
}

void ESCode::discard()
{
    code.clear();
    lines.clear();
}

int ESCode::depthChange(int offset, bool jumps) const
{
    const ESOpcodeInfo& info = OpcodeTable[code[size_t(offset)]];
    int change = jumps ? info.jump : info.next;
    switch (info.operands) {
    case ESOperands::Count: return change - operandAt(offset + 1);
    case ESOperands::SlotCount:
    case ESOperands::NameCount: return change - operandAt(offset + 3);
    case ESOperands::Flag: return change + code[size_t(offset) + 1];
    case ESOperands::None:
    case ESOperands::Number:
    case ESOperands::String:
    case ESOperands::Function:
    case ESOperands::Slot:
    case ESOperands::Target: return change;
    }
    return change;
}

ESThread& ESCode::makeThread()
{
    m_thread = std::make_unique<ESThread>(*this);
    return *m_thread;
}
