#include "sim/Decoder.h"
#include "sim/Dispatch.h"
#include "sim/Instructions.h"
#include "sim/Operands.h"
#include "sim/limits.h"

#include <optional>

namespace maxq30 {

namespace {

// An instruction with its prefix words, taken apart.
struct Words {
    uint32_t first;       // address of the first word
    unsigned count;       // with prefix words
    uint16_t instruction; // the word that names source and destination
    uint32_t value;       // the low bytes of all words, the instruction's lowest
    unsigned source;      // register number; of use when fromRegister
    unsigned destination;
    bool fromRegister;

    bool prefixed() const { return count > 1; }
    uint32_t behind() const { return first + count; }
};

constexpr bool isPrefix(uint16_t word)
{
    return (word & 0xF00) == 0xB00;
}

// How a register of modules 14 and 15 reaches memory. Step is in bytes.
struct Access {
    enum Kind : uint8_t { None, Memory } kind = None;
    unsigned pointer = 0; // register number of DP[0] or DP[1], or of BP for an address of BP + OFFS
    uint8_t width = 0;
    int8_t step = 0;
};

constexpr Access throughFrame(uint8_t width, int direction)
{
    return {Access::Memory, reg::BP, width, int8_t(width * direction)};
}
constexpr Access throughPointer(unsigned pointer, uint8_t width, int direction)
{
    return {Access::Memory, pointer, width, int8_t(width * direction)};
}

// By index; entries that are registers, or nothing, stay None.
constexpr Access FrameAccesses[11] = {
    {},
    throughFrame(1, 1),
    throughFrame(1, -1),
    {},
    throughFrame(2, 1),
    throughFrame(2, -1),
    throughFrame(4, 1),
    throughFrame(4, -1),
    throughFrame(1, 0),
    throughFrame(2, 0),
    throughFrame(4, 0),
};

// For DP[0], by index; DP[1] follows in the same order ten indexes on.
constexpr unsigned PointerIndexes = 10;
constexpr Access PointerAccesses[PointerIndexes] = {
    throughPointer(0, 1, 0), throughPointer(0, 1, 1),  throughPointer(0, 1, -1), {},
    throughPointer(0, 2, 1), throughPointer(0, 2, -1), throughPointer(0, 4, 1),  throughPointer(0, 4, -1),
    throughPointer(0, 2, 0), throughPointer(0, 4, 0),
};

Access memoryAccess(unsigned number)
{
    unsigned index = number >> 4;
    if ((number & 15) == 14)
        return index < std::size(FrameAccesses) ? FrameAccesses[index] : Access{};
    if ((number & 15) != 15 || index >= 2 * PointerIndexes)
        return {};
    Access access = PointerAccesses[index % PointerIndexes];
    access.pointer = index < PointerIndexes ? reg::DP0 : reg::DP1;
    return access;
}

// What both ends share: where a value lives.
struct Place {
    DestinationKind kind;
    unsigned number; // register, or pointer
    int8_t step = 0;
    uint8_t width = 0; // of a memory access, in bytes
};

std::optional<Place> placeOf(const Machine& m, unsigned number)
{
    using enum DestinationKind;
    if (Access access = memoryAccess(number); access.kind == Access::Memory) {
        bool frame = access.pointer == reg::BP;
        DestinationKind kind = access.width == 1   ? (frame ? FrameByte : PointerByte)
                               : access.width == 2 ? (frame ? FrameWord : PointerWord)
                                                   : (frame ? FrameLong : PointerLong);
        return Place{kind, access.pointer, access.step, access.width};
    }
    switch (number) {
    case reg::AP:
    case reg::APC:
    case reg::PSF:
    case reg::IC:
    case reg::IMR:
    case reg::IIR: return Place{Special, number};
    case reg::FP: return Place{FramePointer, number};
    }
    if (isPeripheral(number) && m.peripherals)
        return Place{Special, number};
    if (RegisterMasks[number])
        return Place{(number & 15) == 9 ? Numbered : Register, number};
    return std::nullopt;
}

constexpr SourceKind asSource(DestinationKind kind)
{
    switch (kind) {
    case DestinationKind::Register:
    case DestinationKind::Numbered: return SourceKind::Register;
    case DestinationKind::FramePointer: return SourceKind::FramePointer;
    case DestinationKind::Special: return SourceKind::Special;
    case DestinationKind::PointerByte: return SourceKind::PointerByte;
    case DestinationKind::PointerWord: return SourceKind::PointerWord;
    case DestinationKind::PointerLong: return SourceKind::PointerLong;
    case DestinationKind::FrameByte: return SourceKind::FrameByte;
    case DestinationKind::FrameWord: return SourceKind::FrameWord;
    case DestinationKind::FrameLong: return SourceKind::FrameLong;
    default: return SourceKind::Accumulator;
    }
}

bool resolveSource(const Machine& m, const Words& words, Op& op, SourceKind& kind)
{
    if (!words.fromRegister) {
        kind = SourceKind::Immediate;
        op.imm = words.value;
        return true;
    }
    unsigned number = words.source;
    unsigned index = number >> 4;
    switch (number & 15) {
    case 10: kind = SourceKind::Accumulator; return index < 2;
    case 11: // the upper bytes that the prefix words of this instruction set
        kind = SourceKind::Immediate;
        op.imm = words.value >> 8 & 0xFFFF;
        return index < 8;
    case 12:
        kind = SourceKind::Immediate;
        op.imm = words.behind();
        return index == 0;
    }
    if (number == registerNumber(13, 0) || number == registerNumber(13, 8)) {
        kind = index == 0 ? SourceKind::Pop : SourceKind::PopInterrupt;
        op.src = reg::SP;
        op.cycles++;
        return true;
    }
    std::optional<Place> place = placeOf(m, number);
    if (!place)
        return false;
    kind = asSource(place->kind);
    op.src = uint16_t(place->number);
    op.srcStep = place->step;
    op.cycles += place->width == 4;
    return true;
}

// Destinations of module 10 that are not the accumulator itself, by index.
bool resolveAccumulatorSink(unsigned index, Op& op, DestinationKind& kind)
{
    using enum DestinationKind;
    static constexpr DestinationKind Kinds[16] = {
        Accumulator,       And,    Or,     Xor,    Add,    Sub,    AddCarry, SubBorrow, ClearBits,
        CountLeadingZeros, Insert, Insert, Insert, Insert, Insert, Insert};
    if (index >= std::size(Kinds))
        return false;
    kind = Kinds[index];
    if (kind == Insert) { // indexes 10 to 13 are the bytes, 14 and 15 the words
        bool byte = index < 14;
        op.dst = uint16_t(byte ? 8 * (index - 10) : 16 * (index - 14));
        op.mask = (byte ? 0xFFu : 0xFFFFu) << op.dst;
    }
    return true;
}

bool resolveDestination(const Machine& m, const Words& words, Op& op, DestinationKind& kind)
{
    using enum DestinationKind;
    static constexpr DestinationKind JumpsByIndex[8] = {Jump,     JumpZero,    JumpCarry,    JumpEqual,
                                                        JumpSign, JumpNotZero, JumpNotCarry, JumpNotEqual};
    unsigned number = words.destination;
    unsigned index = number >> 4;
    switch (number & 15) {
    case 7: // a bit of the source, for the carry
        kind = CarryFromBit;
        op.dst = uint16_t(index);
        return index < 8;
    case 8:
        if (index == 2 || index == 7) {
            kind = index == 2 ? Nul : Compare;
            return true;
        }
        break;
    case 10: return resolveAccumulatorSink(index, op, kind);
    case 12:
        if (index >= std::size(JumpsByIndex))
            return false;
        kind = JumpsByIndex[index];
        return true;
    case 13:
        switch (index) {
        case 0:
            kind = Push;
            op.dst = reg::SP;
            op.cycles++;
            return true;
        case 3:
            kind = Call;
            op.dst = reg::SP;
            op.cycles++;
            return true;
        case 4: kind = LoopZero; return true;
        case 5: kind = LoopOne; return true;
        }
        break;
    }
    std::optional<Place> place = placeOf(m, number);
    if (!place)
        return false;
    kind = place->kind;
    op.dst = uint16_t(place->number);
    op.dstStep = place->step;
    op.cycles += place->width == 4;
    op.mask = RegisterMasks[place->number];
    return true;
}

bool takesCodeTarget(DestinationKind kind)
{
    return kind >= DestinationKind::Jump;
}

// The forms whose source number is not a source. True when the words are one of them; op.run then is
// null if the form means nothing.
bool decodeSpecialForm(const Machine& m, const Words& words, Op& op)
{
    unsigned sourceIndex = words.source >> 4;
    unsigned destinationIndex = words.destination >> 4;
    if (!words.fromRegister)
        return false;

    if ((words.source & 15) == 7) { // one bit of the destination: three bits of number, one of value
        if (sourceIndex >= 16)
            return true;
        DestinationKind kind;
        if (!resolveDestination(m, words, op, kind))
            return true;
        op.run = bitChange(kind);
        op.src = uint16_t(1u << (sourceIndex & 7));
        op.imm = sourceIndex >= 8 ? op.src : 0;
        op.cycles += kind == DestinationKind::PointerLong || kind == DestinationKind::FrameLong;
        return true;
    }

    if ((words.source & 15) == 10 && (words.destination & 15) == 10 && destinationIndex < 8) {
        if (destinationIndex == 0 && sourceIndex == 0)
            return false;
        op.run = accumulatorOperation(destinationIndex, sourceIndex, words.count);
        if (!op.run && sourceIndex < 16) {
            op.run = bitOperation(destinationIndex, words.count);
            op.dst = uint16_t(sourceIndex);
        }
        return true;
    }
    return false;
}

bool decodeTransport(const Machine& m, const Words& words, Op& op)
{
    SourceKind source;
    DestinationKind destination;
    if (!resolveSource(m, words, op, source) || !resolveDestination(m, words, op, destination))
        return false;
    if (takesCodeTarget(destination) && source == SourceKind::Immediate) {
        if (!words.fromRegister && !words.prefixed())
            op.imm = words.behind() + uint32_t(int32_t(int8_t(words.instruction)));
        if (op.imm < m.codeWords) {
            op.run = fixedJump(destination, words.count);
            op.imm -= words.first;
            op.src = Op::FixedTarget;
            return true;
        }
    }
    op.run = transport(source, destination, words.count);
    return true;
}

} // namespace

Op decodeAt(const Machine& m, uint32_t first)
{
    Op op{};
    op.cycles = 1;
    op.words = 1;

    Words words{};
    words.first = first;
    uint16_t nearestPrefix = 0;
    uint16_t word;
    while (true) {
        uint32_t at = first + words.count;
        if (at >= m.codeWords) {
            op.run = fetchFault;
            op.imm = at * 2;
            return op;
        }
        word = m.codeWord(at);
        words.count++;
        words.value = words.value << 8 | (word & 0xFF);
        if (!isPrefix(word))
            break;
        if (words.count > limits::MaximumPrefixes) {
            op.run = invalidInstruction;
            return op;
        }
        nearestPrefix = word;
    }
    words.instruction = word;
    words.fromRegister = word & 0x8000;
    words.source = (word & 0xFF) | (nearestPrefix & 0x1000) >> 4;
    words.destination = (word >> 8 & 0x7F) | (nearestPrefix & 0x6000) >> 6;
    op.words = op.cycles = uint8_t(words.count);

    if (!decodeSpecialForm(m, words, op))
        decodeTransport(m, words, op);
    if (!op.run) {
        op.run = invalidInstruction;
        op.cycles = op.words;
    }
    return op;
}

} // namespace maxq30
