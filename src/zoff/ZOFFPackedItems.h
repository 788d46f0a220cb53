// The items of a fragment as the reader leaves them: packed into a few bytes each, until somebody asks for
// the objects. An executable has millions of instructions; most runs of the tool only want their bytes.
//
// The items are a stream of operations that puts the objects together again, in the order of the file: one
// for each instruction and source position, and a pointer for each item that is an object already (labels,
// data, directives, and instructions out of the ordinary). The code bytes of packed instructions stand
// apart, as runs of consecutive addresses, ready to be copied. All of it lies in the module's pool and is
// trusted: the reader checks what it packs. ZOFFItemPacker.h writes it.
#pragma once

#include "support/Pool.h"
#include "zoff/PoolContainers.h"
#include "zoff/ZOFFInsn.h"

// Bytes at consecutive addresses, or an item of its own, whose bytes only the item knows.
struct ZOFFRun {
    ZOFFInsn* item;       // null for bytes
    const uint8_t* bytes; // null for an item
    int32_t pc;           // of bytes; 0 or above
    uint32_t count;       // of bytes

    // Of both kinds. An item's size may be 0 or below, and its address negative, when it has no bytes or
    // no place.
    int64_t size() const { return item ? item->length() : int64_t(count); }
    int32_t address() const { return item ? item->pc() : pc; }
    // Copies all of its bytes.
    void copyBytes(uint8_t* to) const;
};

class ZOFFPackedItems : public PoolObject {
public:
    ZOFFPackedItems() : m_pool(Pool::currentPool()) {}

    // All that has bytes, in the order of the items.
    const PoolList<ZOFFRun>& runs() const { return m_runs; }
    bool hasHiddenInsns() const { return m_hidden; }
    // Whether an address lies in any item.
    bool covers(uint32_t address) const;
    // Makes the objects, in the module's pool, and links them into their fragment.
    void unpack(ZOFFFragment& fragment) const;

    // What the pointer behind an instruction's operation means.
    enum OperandKind : uint8_t { NoOperand = 0, Expression = 8, SymbolValue = 16, MarkerPlace = 24 };
    // The object of one packed instruction, without its source position.
    static ZOFFProcessorInsn* makeInsn(const uint8_t* operation, const uint8_t* bytes, int32_t pc,
                                       int32_t stackAdjust);

private:
    friend class ZOFFItemPacker;

    // One byte each; behind it what the comment says. Numbers are 32 bits.
    enum Operation : uint8_t {
        Insn = 0, // 0 to 31: an instruction, words less one and the flags; the operand's pointer
        Hidden = 4,
        OperandMask = 24,
        Object = 32, // a pointer: an item that exists
        Step,        // one signed byte: a source position, so many lines behind the last one
        Line,        // a number: a source position
        File,        // a pointer: the file of source positions from here on, whose lines count from 0
        SetPC,       // a number: the address of the next item, where it isn't behind the last one
        AdjustStack, // a number: of instructions from here on
        ResetLocus,  // items from here on have no source position
        UseLocus,    // a pointer: items from here on have this one, from another fragment
        Continue     // a pointer: where the stream goes on; null at its end
    };

    // An object that was made of a packed item before all others, by the place of its operation.
    struct Made {
        const uint8_t* operation;
        ZOFFInsn* item;
    };

    Pool* m_pool;
    const uint8_t* m_stream = nullptr;
    uint8_t* m_link = nullptr; // the pointer at its end
    PoolList<ZOFFRun> m_runs;
    PoolList<Made> m_made;
    bool m_hidden = false;
};
