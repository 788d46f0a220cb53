// Reads an object file, a library or an executable. A file is a program for a small stack machine, run
// in one pass from its first byte to its last; the objects of a module are what it builds on the way.
//
// Every fault of a file throws one HException and leaves nothing behind. Work and memory are bounded by
// the size of the file: what a file asks for beyond that (limits.h) makes it a bad one.
#pragma once

#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInput.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItemPacker.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"
#include "zoff/limits.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

class HByteStream;
class ZOFFExpr;
class ZOFFFilename;
class ZOFFFunctionType;
class ZOFFInitInsn;
class ZOFFModule;
class ZOFFPtrType;
class ZOFFSection;
class ZOFFStrucType;
class ZOFFSymbol;

class ZOFFReader {
public:
    // The bytes are the whole file and outlive the reader. With keepLoci every item refers to the source
    // position in force; without, only the first one behind it does.
    ZOFFReader(const HByteStream* input, bool keepLoci);
    ZOFFReader(std::span<const unsigned char> input, bool keepLoci) : m_input(input), m_keepLoci(keepLoci) {}
    // The file outlives the reader, too; no more is read of it than is needed.
    ZOFFReader(HFileBlocks* input, bool keepLoci) : m_input(input), m_keepLoci(keepLoci) {}
    virtual ~ZOFFReader();
    ZOFFReader(const ZOFFReader&) = delete;
    ZOFFReader& operator=(const ZOFFReader&) = delete;

    // The module, which the caller gives back through release(); null for a file without one. `verbose`
    // traces each record on standard output.
    ZOFFModule* readFile(bool verbose);
    // Up to the end of what a scan for dependencies needs: libraries and attributes.
    ZOFFModule* readFileQuickly(bool verbose);
    // Ends the module with all that is in it; null is allowed.
    static void release(ZOFFModule* module);

protected:
    // One instruction, made from its operands on the stack.
    virtual ZOFFProcessorInsn* makeInsn() = 0;

    // The operand stack. Each operation throws when the operand is not what it asks for.
    void push(ZOFFObject* object); // also null
    ZOFFObject* popObject();       // also null
    int64_t popConst();
    int64_t popConst(uint64_t min, uint64_t max); // compared unsigned, both bounds included
    ZOFFExpr* popExpr(bool allowNull);
    ZOFFScope* popScope(bool allowNull);
    std::string_view popString();
    ZOFFSection* popSection();
    ZOFFType* popType();
    ZOFFSymbol* popSymbol();

private:
    // An entry of the stack or of the alias table. Literals and strings become objects only where one
    // is asked for: an executable has several of each for every instruction.
    struct Entry {
        enum Kind : uint8_t { Object, Const, String };
        Kind kind = Object;
        ZOFFKind objectKind = ZOFFKind::Other; // which saves a look at the object
        uint32_t length = 0;                   // of a string
        union {
            ZOFFObject* object = nullptr;
            int64_t value;
            const char* text;
        };
        bool isNull() const { return kind == Object && !object; }
        ZOFFObject* objectOfKind(ZOFFKind wanted) const
        {
            return kind == Object && objectKind == wanted ? object : nullptr;
        }
        void setObject(ZOFFObject* value)
        {
            kind = Object;
            object = value;
            objectKind = value ? value->kind() : ZOFFKind::Other;
        }
    };

    ZOFFModule* read(bool verbose);
    void perform(unsigned tag);
    void performType(ZOFFTag tag);
    void performItem(ZOFFTag tag);
    void performScope(ZOFFTag tag);
    void trace(size_t offset, unsigned tag) const;
    std::string describe(const Entry& entry) const;

    [[noreturn]] static void bad(const char* what);
    [[noreturn]] static void badOperand(const char* expected);
    [[noreturn]] static void notASymbol();
    [[noreturn]] static void outOfRange();
    [[noreturn]] static void endOfInput();

    void readWideLiteral();
    void readStringPool();
    void makeString();
    void setBytes();
    void setPC();
    void addProcessorInsn(bool hidden);
    void pushConst(int64_t value);
    void pushEntry(const Entry& entry);
    Entry popEntry();
    ZOFFObject* objectOf(const Entry& entry);
    Entry shared(Entry entry);

    // Numbers that are kept in 32 bits, signed or not; sizes and counts, which are never negative.
    int32_t popInt32();
    int32_t popSize();
    const HString* popName();       // of a string, which is not missing
    const HString* popNameOrNull(); // null for NULL
    ZOFFObject* popAnyObject();     // not null
    ZOFFFilename* popFile();
    ZOFFStrucType* popStruc();
    ZOFFFunctionType* popFunction();
    const HString* nameOf(std::string_view bytes);
    void chargeNameBytes(size_t count);
    void chargeCode(size_t count); // and what has been packed

    // The largest number that an alias or a marker may have.
    uint64_t largestNumber() const { return std::max<uint64_t>(m_input.size(), ZOFFLimits::NumbersFree); }
    ZOFFModule& module() const;
    void needSection() const;
    ZOFFInsn& currentInsn();
    ZOFFLocus* currentLocus();
    ZOFFMarker* marker(uint64_t number);
    void place(ZOFFInsn* insn);
    void placeMarker(uint64_t number, const HString* name);
    void placeAsCurrent(ZOFFInsn* insn);

    // The packed way of instructions and source positions, for keepLoci only: see ZOFFReaderPacked.cpp.
    void openPacker();
    bool readPacked();
    bool packInsn(uint64_t opcode, ZOFFExpr* operand, bool hidden);
    void packLocus(ZOFFFilename* file, int32_t line);

    const ZOFFProcessor& m_processor = ZOFFProcessor::current();
    ZOFFInput m_input;
    bool m_keepLoci;
    bool m_quick = false;

    Entry m_stack[ZOFFLimits::StackEntries];
    int m_depth = 0;
    std::vector<Entry> m_aliases; // a null entry is a hole
    std::vector<ZOFFMarker*> m_markers;
    std::string_view m_strings;
    int64_t m_nameBytes = 0;    // of all names so far
    int64_t m_codeBytes = 0;    // of all items so far
    int64_t m_pointerSteps = 0; // from pointer to pointer, in search of circles

    std::unique_ptr<Pool> m_pool; // until the module is handed out
    ZOFFModule* m_module = nullptr;
    ZOFFSection* m_section = nullptr;
    ZOFFInsn* m_insn = nullptr;
    ZOFFLocus* m_locus = nullptr;
    // The two registers above while they are packed items; they become objects when one is asked for.
    struct PackedInsn {
        const uint8_t* operation = nullptr; // null when the register is none
        const uint8_t* bytes;
        ZOFFFragment* fragment;
        int32_t pc;
        int32_t stackAdjust;
    } m_packedInsn;
    struct PackedLocus {
        const uint8_t* operation = nullptr;
        ZOFFFragment* fragment;
        ZOFFFilename* file;
        int32_t line;
        int32_t pc;
    } m_packedLocus;
    ZOFFItemPacker m_packer;
    int32_t m_pc = -1;
    int32_t m_stackAdjust = 0;
    bool m_breakPending = false;
    ZOFFPtrType* m_lastPointer = nullptr;
    std::vector<ZOFFInitInsn*> m_inits;
};
