// An item of a fragment, whether it emits bytes or not: a machine instruction, a directive, a label, a
// source position. Items of a fragment are linked to one another, so an item is its own place in the
// list. An item of a fragment that is still packed (ZOFFPackedItems.h) has no neighbours and no source
// position yet; who asks for them unpacks the fragment.
#pragma once

#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"

#include <span>

class ZOFFFilename;
class ZOFFFragment;
class ZOFFLocus;

class ZOFFInsn : public ZOFFObject {
public:
    // Appends the text, which begins with a tab.
    virtual void print(std::string& out) const { (void)out; }
    virtual std::string printPC() const;     // "%04X"
    virtual std::string printOpCode() const; // "%02X" of each byte, and a tab when there are fewer than 4
    // Bytes in memory; an item of length 0 (or below) emits nothing.
    virtual int length() const = 0;
    // What an assembler should count with while addresses still move.
    virtual int estimatedLength() const { return length(); }
    // 0 beyond the bytes that the item has. `i` is at least 0.
    virtual uint8_t getByte(int i) const { return i < byteCount() ? bytes()[size_t(i)] : 0; }
    // The first length() bytes, as getByte() gives them.
    virtual void copyBytes(uint8_t* to) const;
    virtual void setPC(long pc) { m_pc = int32_t(pc); }
    // Fixes the bytes from the operand. Throws HException with the reason when it is unresolved.
    virtual void encode() {}

    std::string printString() const;

    // Neighbours in the fragment, null at its ends.
    ZOFFInsn* next() const
    {
        needUnpacked();
        return m_next;
    }
    ZOFFInsn* previous() const
    {
        needUnpacked();
        return m_previous;
    }
    ZOFFFragment* fragment() const { return m_fragment; } // null until it is added to one
    ZOFFLocus* locus() const                              // may be null
    {
        needUnpacked();
        return m_locus;
    }
    void setLocus(ZOFFLocus* locus) { m_locus = locus; }
    int32_t pc() const { return m_pc; } // -1 means unplaced
    int byteCount() const { return int(m_byteCount); }
    std::span<const uint8_t> bytes() const
    {
        return {m_byteCount > InlineBytes ? m_bytes : m_inline, m_byteCount};
    }
    // Storage comes from the current pool when there are more than eight.
    void appendBytes(std::string_view bytes);
    void clearBytes() { m_byteCount = 0; }
    bool hidden() const { return m_hidden; }
    void setHidden(bool on) { m_hidden = on; }
    // What the stack pointer is off by here, as told by the compiler; 1 stands for "not told".
    int32_t stackAdjust() const { return m_stackAdjust; }
    void setStackAdjust(int32_t adjust) { m_stackAdjust = adjust; }
    uint16_t extensionWord() const { return m_extensionWord; }
    void setExtensionWord(uint16_t word) { m_extensionWord = word; }
    int32_t instrumentationData() const { return m_instrumentationData; }
    void setInstrumentationData(int32_t data) { m_instrumentationData = data; }
    ZOFFExpr* operand() const { return kind() < ZOFFKind::Marker ? m_operand : nullptr; } // may be null
    void setOperand(ZOFFExpr* operand) { m_operand = operand; }

protected:
    explicit ZOFFInsn(ZOFFKind kind, ZOFFExpr* operand = nullptr) : ZOFFObject(kind), m_operand(operand) {}

private:
    friend class ZOFFFragment;
    friend class ZOFFItemPacker;
    static constexpr uint32_t InlineBytes = 8;

    void needUnpacked() const
    {
        if (m_packed) [[unlikely]]
            unpackFragment();
    }
    void unpackFragment() const;

    // What a walk over all items touches stands in front, in one cache line.
    uint16_t m_extensionWord = 0;
    ZOFFInsn* m_next = nullptr;

protected:
    // A program has as many source positions as lines, so a marker keeps what it has where other items
    // have their bytes and their operand.
    struct MarkerNumbers {
        int32_t number;      // a label's writer index, or a source position's line
        int32_t printNumber; // or a source position's record tag
    };
    union {
        uint8_t m_inline[InlineBytes] = {}; // up to 8 bytes
        uint8_t* m_bytes;                   // in a pool, with room for the next power of two
        mutable MarkerNumbers m_numbers;
    };

private:
    int32_t m_pc = -1;
    uint32_t m_byteCount : 30 = 0;
    uint32_t m_hidden : 1 = false;
    uint32_t m_packed : 1 = false;

protected:
    union {
        ZOFFExpr* m_operand;
        ZOFFSymbol* m_label;       // of a label
        const HString* m_fileName; // of a file name
        ZOFFFilename* m_file;      // of a source position
    };

private:
    ZOFFInsn* m_previous = nullptr;
    ZOFFFragment* m_fragment = nullptr;
    ZOFFLocus* m_locus = nullptr;
    int32_t m_stackAdjust = 1;
    int32_t m_instrumentationData = 0;
};

// A machine instruction, by its opcode. MAXQ30 instructions have at most one operand.
class ZOFFProcessorInsn : public ZOFFInsn {
public:
    uint64_t opcode() const { return m_opcode; }
    void copyBytes(uint8_t* to) const override;

protected:
    ZOFFProcessorInsn(uint64_t opcode, ZOFFExpr* operand)
        : ZOFFInsn(ZOFFKind::Processor, operand), m_opcode(opcode)
    {
    }

    uint64_t m_opcode;
};
