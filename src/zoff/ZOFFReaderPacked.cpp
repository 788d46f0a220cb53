// The bulk of an executable: instructions without surprises, and the source positions between them. They
// are checked as the records of any other file are, but they go into their fragment packed
// (ZOFFPackedItems.h) and not as objects.
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItemPacker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFPackedItems.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFReaderInline.h"

#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFTags.h"
#include "zoff/limits.h"

#include <initializer_list>

using Items = ZOFFPackedItems;

namespace {

constexpr unsigned Any = 256;

// Up to eight bytes of records with some left open, compared in one step. Besides being fast by itself, it
// leaves no length to be waited for before the next record can be looked at.
struct Pattern {
    uint64_t mask = 0;
    uint64_t bits = 0;
    unsigned size = 0;

    consteval Pattern(std::initializer_list<unsigned> bytes)
    {
        for (unsigned byte : bytes) {
            if (byte != Any) {
                mask |= uint64_t(0xFF) << 8 * size;
                bits |= uint64_t(byte) << 8 * size;
            }
            ++size;
        }
    }
    bool matches(uint64_t bytes) const { return (bytes & mask) == bits; }
};

// The number in `count` open bytes from `from` on, most significant first.
inline uint64_t number(uint64_t bytes, unsigned from, unsigned count)
{
    return __builtin_bswap64(bytes << 8 * (8 - from - count)) & ((uint64_t(1) << 8 * count) - 1);
}

// The records that nearly all instructions are made of: literals have two or three bytes.
constexpr unsigned LitX = unsigned(ZOFFTag::LitX), SetPC = unsigned(ZOFFTag::SetPC),
                   Insn = unsigned(ZOFFTag::Insn), Null = unsigned(ZOFFTag::Null),
                   MkString = unsigned(ZOFFTag::MkString), SetBytes = unsigned(ZOFFTag::SetBytes);
constexpr Pattern SetPC2 = {LitX, 2, Any, Any, SetPC};
constexpr Pattern SetPC3 = {LitX, 3, Any, Any, Any, SetPC};
constexpr Pattern Insn2 = {Null, LitX, 2, Any, Any, Insn};
constexpr Pattern SetBytes1 = {LitX, 1, Any, 2, MkString, SetBytes};
constexpr Pattern SetBytes2 = {LitX, 2, Any, Any, 2, MkString, SetBytes};
constexpr Pattern SetBytes3 = {LitX, 3, Any, Any, Any, 2, MkString, SetBytes};

// A literal of at most eight bytes; ten bytes must be there. Others are left to the reader's main loop.
inline bool takeLiteral(const unsigned char*& at, uint64_t& value)
{
    if (*at == LitX)
        return takeNumber(++at, value);
    value = *at++;
    return value <= unsigned(ZOFFTag::Lit7);
}

// The code bytes of an instruction as records, where they are those that its opcode says; else null.
// Moves behind the records.
inline const char* takeBytes(const unsigned char*& at, std::string_view strings, uint64_t opcode,
                             unsigned& count, const ZOFFProcessor& processor)
{
    count = ZOFFProcessor::insnLength(opcode);
    uint64_t offset, length;
    if (!takeLiteral(at, offset) || !takeLiteral(at, length) || at[0] != MkString || at[1] != SetBytes)
        return nullptr;
    at += 2;
    if (length != count || offset > strings.size() || strings.size() - offset < count)
        return nullptr;
    const char* code = strings.data() + offset;
    return processor.opcodeOf(reinterpret_cast<const uint8_t*>(code), count) == opcode ? code : nullptr;
}

// The code bytes of an instruction of one word behind its usual records, of which `bytes` are the first; null
// where they are not those that its opcode says. Moves behind the records.
inline const char* takeWord(const unsigned char*& at, std::string_view strings, uint64_t bytes,
                            const ZOFFProcessor& processor)
{
    const unsigned char* next = at + Insn2.size;
    uint64_t more = load(next);
    size_t offset;
    if (SetBytes2.matches(more)) {
        offset = number(more, 2, 2);
        next += SetBytes2.size;
    } else if (SetBytes3.matches(more)) {
        offset = number(more, 2, 3);
        next += SetBytes3.size;
    } else if (SetBytes1.matches(more)) {
        offset = number(more, 2, 1);
        next += SetBytes1.size;
    } else {
        return nullptr;
    }
    if (offset + 2 > strings.size())
        return nullptr;
    const char* code = strings.data() + offset;
    if (processor.wordOf(reinterpret_cast<const uint8_t*>(code)) != number(bytes, 3, 2))
        return nullptr;
    at = next;
    return code;
}

// Two literals and two tags.
constexpr size_t BytesRecords = 22;
// At most four literals and six tags make an instruction with its operand and its bytes; and a pattern looks
// at eight bytes.
constexpr size_t ItemRecords = 56;

} // namespace

void ZOFFReader::openPacker()
{
    if (m_packer.isOpen())
        return;
    ZOFFFragment* fragment = m_section->currentFragment();
    m_packer.open(fragment ? fragment : m_section->newFragment(), m_stackAdjust, currentLocus());
}

ZOFFInsn& ZOFFReader::currentInsn()
{
    if (m_packedInsn.operation) {
        m_insn = ZOFFPackedItems::makeInsn(m_packedInsn.operation, m_packedInsn.bytes, m_packedInsn.pc,
                                           m_packedInsn.stackAdjust);
        ZOFFItemPacker::setMade(m_packedInsn.fragment, m_packedInsn.operation, m_insn);
        m_packedInsn.operation = nullptr;
    }
    if (!m_insn)
        bad("no instruction defined");
    return *m_insn;
}

ZOFFLocus* ZOFFReader::currentLocus()
{
    if (m_packedLocus.operation) {
        m_locus = new ZOFFLocus(m_packedLocus.file, m_packedLocus.line, ZOFFTag::Locus);
        m_locus->setPC(m_packedLocus.pc);
        ZOFFItemPacker::setMade(m_packedLocus.fragment, m_packedLocus.operation, m_locus);
        m_packedLocus.operation = nullptr;
    }
    return m_locus;
}

void ZOFFReader::packLocus(ZOFFFilename* file, int32_t line)
{
    openPacker();
    m_packer.makeReady(m_pc);
    ZOFFItemPacker::Cursor cursor = m_packer.cursor();
    const uint8_t* operation = cursor.locus(file, line);
    m_packer.setCursor(cursor);
    m_locus = nullptr;
    m_packedLocus = {operation, m_packer.fragment(), file, line, m_pc};
}

// Takes the instruction's bytes from the records behind it.
bool ZOFFReader::packInsn(uint64_t opcode, ZOFFExpr* operand, bool hidden)
{
    if (!ZOFFItemPacker::packsAt(m_pc) || m_input.left() < BytesRecords)
        return false;
    const unsigned char* at = m_input.at();
    unsigned count;
    const char* bytes = takeBytes(at, m_strings, opcode, count, m_processor);
    if (!bytes)
        return false;
    m_input.moveTo(at);
    openPacker();
    m_packer.makeReady(m_pc);
    ZOFFItemPacker::Cursor cursor = m_packer.cursor();
    const uint8_t* code = cursor.code;
    const uint8_t* operation =
        cursor.insn(bytes, count, hidden, operand ? Items::Expression : Items::NoOperand, operand);
    m_packer.setCursor(cursor);
    if (hidden)
        m_packer.noteHidden();
    m_insn = nullptr;
    m_packedInsn = {operation, code, m_packer.fragment(), m_pc, m_stackAdjust};
    chargeCode(0);
    return true;
}

// Reads on as long as the records are those of a usual instruction or source position, with nothing on
// the way through the operand stack. Whatever else comes is left to the main loop, faults included. False
// at the end of the file.
bool ZOFFReader::readPacked()
{
    // What a record of these takes from the stack it has put there itself, so there must be room.
    if (m_breakPending || m_depth > ZOFFLimits::StackEntries - 4 || m_input.left() < ItemRecords)
        return true;
    const unsigned char* at = m_input.at();
    const unsigned char* const end = m_input.end() - ItemRecords;
    const std::string_view strings = m_strings;
    const ZOFFProcessor& processor = m_processor;
    const uint64_t largest = largestNumber();
    ZOFFItemPacker::Cursor cursor = m_packer.cursor();
    int32_t pc = m_pc;
    const uint8_t* lastInsn = m_packedInsn.operation;
    const uint8_t* lastLocus = m_packedLocus.operation;
    // What the code outside of this loop sees.
    auto sync = [&] {
        m_packer.setCursor(cursor);
        m_pc = pc;
    };
    auto makeReady = [&] {
        sync();
        m_packer.makeReady(pc);
        cursor = m_packer.cursor();
    };

    while (at <= end) {
        uint64_t bytes = load(at), value;
        if (SetPC3.matches(bytes)) {
            pc = int32_t(number(bytes, 2, 3));
            at += SetPC3.size;
            continue;
        }
        if (SetPC2.matches(bytes)) {
            pc = int32_t(number(bytes, 2, 2));
            at += SetPC2.size;
            continue;
        }
        if (Insn2.matches(bytes) && cursor.isReady(pc) && ZOFFItemPacker::packsAt(pc)) {
            if (const char* code = takeWord(at, strings, bytes, processor)) {
                m_packedInsn.bytes = cursor.code;
                m_packedInsn.operation = cursor.insn(code, 2);
                m_packedInsn.pc = pc;
                continue;
            }
        }
        const unsigned char* next = at;
        auto kind = Items::NoOperand;
        ZOFFObject* operand = nullptr;
        unsigned tag = *next;
        if (tag == Null) {
            ++next;
        } else {
            if (!takeLiteral(next, value))
                break;
            tag = *next++;
            if (tag == SetPC && value <= UINT32_MAX) {
                pc = int32_t(uint32_t(value));
                at = next;
                continue;
            }
            if (tag == unsigned(ZOFFTag::MarkerRef) && value <= largest) {
                kind = Items::MarkerPlace;
                operand = marker(value);
            } else if (tag == unsigned(ZOFFTag::Alias) && value < m_aliases.size()) {
                operand = m_aliases[value].objectOfKind(ZOFFKind::Filename);
                if (!operand) {
                    kind = Items::SymbolValue;
                    operand = m_aliases[value].objectOfKind(ZOFFKind::Symbol);
                    if (!operand || *next++ != unsigned(ZOFFTag::SymbolVal))
                        break;
                }
            } else {
                break;
            }
        }
        if (!takeLiteral(next, value))
            break;
        tag = *next++;
        if (operand && kind == Items::NoOperand) {
            if (tag != unsigned(ZOFFTag::Locus) || value > UINT32_MAX)
                break;
            if (!cursor.isReady(pc)) [[unlikely]]
                makeReady();
            m_packedLocus.file = static_cast<ZOFFFilename*>(operand);
            m_packedLocus.line = int32_t(uint32_t(value));
            m_packedLocus.pc = pc;
            m_packedLocus.operation = cursor.locus(m_packedLocus.file, m_packedLocus.line);
        } else if (tag == Insn || tag == unsigned(ZOFFTag::HiddenInsn)) {
            unsigned count;
            const char* code = takeBytes(next, strings, value, count, processor);
            if (!code || !ZOFFItemPacker::packsAt(pc))
                break;
            if (!cursor.isReady(pc)) [[unlikely]]
                makeReady();
            if (tag != Insn)
                m_packer.noteHidden();
            m_packedInsn.bytes = cursor.code;
            m_packedInsn.operation = cursor.insn(code, count, tag != Insn, kind, operand);
            m_packedInsn.pc = pc;
        } else if (tag == unsigned(ZOFFTag::MarkerDef) && !operand && value <= largest) {
            sync();
            chargeCode(0);
            placeMarker(value, nullptr);
            cursor = m_packer.cursor();
        } else {
            break;
        }
        at = next;
    }

    m_input.moveTo(at);
    sync();
    if (m_packedInsn.operation != lastInsn) {
        m_insn = nullptr;
        m_packedInsn.fragment = m_packer.fragment();
        m_packedInsn.stackAdjust = m_stackAdjust;
    }
    if (m_packedLocus.operation != lastLocus) {
        m_locus = nullptr;
        m_packedLocus.fragment = m_packer.fragment();
    }
    chargeCode(0);
    return !m_input.atEnd();
}
