#include "script/engine/ESCode.h"

#include "script/engine/ESThread.h"

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

namespace {

#define ES_OPERANDS(name, operands) ESOperands::operands,
constexpr ESOperands opcodeOperands[] = {ES_OPCODES(ES_OPERANDS)};
#undef ES_OPERANDS
#define ES_NAME(name, operands) #name,
constexpr const char* opcodeNames[] = {ES_OPCODES(ES_NAME)};
#undef ES_NAME

} // namespace

ESOperands ESCode::operands(uint8_t opcode)
{
    return opcodeOperands[opcode];
}

const char* ESCode::mnemonic(uint8_t opcode)
{
    return opcodeNames[opcode];
}

int ESCode::size(uint8_t opcode)
{
    switch (opcodeOperands[opcode]) {
    case ESOperands::None: return 1;
    case ESOperands::Flag: return 2;
    case ESOperands::SlotCount:
    case ESOperands::NameCount: return 5;
    default: return 3;
    }
}

ESThread& ESCode::makeThread()
{
    m_thread = std::make_unique<ESThread>(*this);
    return *m_thread;
}
