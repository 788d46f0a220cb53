// Writes the packed items of one fragment after another (ZOFFPackedItems.h), for the reader.
#pragma once

#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFPackedItems.h"

#include <cstring>

class ZOFFItemPacker {
public:
    // Where the packer writes. The reader's innermost loop works on a copy of its own, and gives it back
    // before it calls the packer.
    struct Cursor {
        uint8_t* stream = nullptr; // for an item with all that it needs there is room up to the limit
        uint8_t* streamLimit = nullptr;
        uint8_t* code = nullptr;
        uint8_t* codeLimit = nullptr;
        int32_t pc = -1;  // of the next item, and where the open run of code ends
        int32_t line = 0; // of the last source position
        ZOFFFilename* file = nullptr;

        bool isReady(int32_t at) const { return pc == at && stream <= streamLimit && code <= codeLimit; }
        // A source position at the cursor's pc. Returns the place of its operation.
        const uint8_t* locus(ZOFFFilename* inFile, int32_t atLine)
        {
            if (file != inFile) [[unlikely]] {
                put(ZOFFPackedItems::File, inFile);
                file = inFile;
                line = 0;
            }
            const uint8_t* operation = stream;
            int64_t step = int64_t(atLine) - line;
            if (step == int8_t(step))
                put(ZOFFPackedItems::Step, int8_t(step));
            else
                put(ZOFFPackedItems::Line, atLine);
            line = atLine;
            return operation;
        }
        // An instruction without operand, and one with the object that its operand is made of. Return the
        // place of its operation.
        const uint8_t* insn(const char* bytes, unsigned count, bool hidden = false)
        {
            if (count == 2) [[likely]]
                memcpy(code, bytes, 2);
            else
                memcpy(code, bytes, count);
            code += count;
            pc += int32_t(count);
            *stream = uint8_t(count / 2 - 1 + (hidden ? ZOFFPackedItems::Hidden : 0));
            return stream++;
        }
        const uint8_t* insn(const char* bytes, unsigned count, bool hidden, ZOFFPackedItems::OperandKind kind,
                            ZOFFObject* operand)
        {
            const uint8_t* operation = insn(bytes, count, hidden);
            if (kind != ZOFFPackedItems::NoOperand)
                put(uint8_t(*--stream | kind), operand);
            return operation;
        }
        template <class T> void put(uint8_t operation, T value)
        {
            *stream = operation;
            memcpy(stream + 1, &value, sizeof value);
            stream += 1 + sizeof value;
        }
    };

    // Whether instructions are packed at an address: not where there is none, nor near the end of all
    // addresses.
    static constexpr bool packsAt(int32_t pc) { return uint32_t(pc) <= uint32_t(INT32_MAX - 16); }

    bool isOpen() const { return m_items; }
    // Goes on in a fragment, whose items so far are packed too.
    void open(ZOFFFragment* fragment, int32_t stackAdjust, ZOFFLocus* locus);
    void close();
    ZOFFFragment* fragment() const { return m_fragment; }

    const Cursor& cursor() const { return m_cursor; }
    void setCursor(const Cursor& cursor) { m_cursor = cursor; }
    // Sees to it that the cursor is ready for an item at an address.
    void makeReady(int32_t pc);

    // Of all packed instructions so far.
    int64_t codeBytes() const { return m_codeBytes + (m_cursor.code - m_runStart); }

    void addObject(ZOFFInsn* item);
    void noteHidden() { m_items->m_hidden = true; }
    void setStackAdjust(int32_t adjust);
    void resetLocus();
    // An item that becomes an object ahead of the others.
    static void setMade(ZOFFFragment* fragment, const uint8_t* operation, ZOFFInsn* item);

private:
    void startRun();
    void finishRun();

    Cursor m_cursor;
    ZOFFFragment* m_fragment = nullptr;
    ZOFFPackedItems* m_items = nullptr; // of the fragment; null while closed
    uint8_t* m_runStart = nullptr;
    int32_t m_runPC = 0;
    int64_t m_codeBytes = 0; // in runs that are finished
};
