// Packed fragments against a plain model of the reader's machine: long programs of random records, whose
// items are known.
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HByteStream.h"
#include "support/HException.h"
#include "tests/support/Failure.h"
#include "tests/support/TempDir.h"
#include "tests/zoff/Records.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInput.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFPackedItems.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

using T = ZOFFTag;

namespace {

struct Item {
    ZOFFKind kind;
    int32_t pc;
    int locus; // number of a LOCUS record, -1 for none
    std::string bytes = {};
    uint64_t opcode = 0;
    int operand = -1;
    bool hidden = false;
    int32_t adjust = 1;
    int32_t data = 0;
    uint16_t extension = 0;
    int line = 0;
    int32_t place = -1; // of a marker that is the operand
};

// Operands by number: constants as they are, and others from these on.
constexpr int AnyRegister = 100, AnySymbol = 200, AnyMarker = 300;

class Program {
public:
    explicit Program(unsigned seed) : m_random(seed)
    {
        m_records.module();
        for (int i = 0; i < 2; ++i)
            m_records.text("file" + std::to_string(i) + ".c").tag(T::MkFilename).lit(1 + i).tag(T::MkAlias);
        for (int i = 0; i < 3; ++i)
            m_records.text(".s" + std::to_string(i)).tag(T::MkSection).lit(3 + i).tag(T::MkAlias);
        for (int i = 0; i < 3; ++i)
            m_records.text("symbol" + std::to_string(i)).tag(T::MkSymbol).lit(6 + i).tag(T::MkAlias);
        switchTo(0);
    }

    void step()
    {
        switch (random(26)) {
        case 0: setPC(int(random(0x20000))); break;
        case 1: setPC(random(4) ? int(random(300)) : -5); break;
        case 2: setPC(0x7FFFFFF0 - int(random(0x1100))); break;
        case 3: locus(int(random(100'000)), random(2)); break;
        case 4:
            m_records.tag(T::ResetLocus);
            m_locus = -1;
            break;
        case 5:
            m_adjust = int(random(9)) - 4;
            m_records.lit(m_adjust).tag(T::AdjustStack);
            break;
        case 6: marker(); break;
        case 7: other(); break;
        case 8:
            if (random(8) == 0)
                m_records.tag(T::Break), m_breakPending = true;
            break;
        case 9:
            if (random(8) == 0)
                switchTo(int(random(3)));
            break;
        case 10: late(); break;
        case 11:
        case 12:
        case 13: locus(m_line + int(random(5)) - 1, m_file); break;
        default: insn();
        }
    }

    std::string file() const { return m_records.file(); }
    // Markers as operands are told by where they are in the end.
    void finish()
    {
        for (std::vector<Item>& section : items) {
            for (Item& item : section) {
                if (item.operand < AnyMarker)
                    continue;
                auto place = m_places.find(item.operand - AnyMarker);
                item.place = place == m_places.end() ? -1 : place->second;
                item.operand = AnyMarker;
            }
        }
    }

    std::vector<Item> items[3];

private:
    unsigned random(unsigned below)
    {
        m_random = m_random * 1664525 + 1013904223;
        return (m_random >> 8) % below;
    }
    Item& add(ZOFFKind kind)
    {
        items[m_section].push_back({kind, m_pc, m_locus});
        return items[m_section].back();
    }
    void switchTo(int section)
    {
        m_section = section;
        m_records.lit(3 + section).tags({T::Alias, T::Section});
    }
    void setPC(int pc)
    {
        m_pc = pc;
        m_records.pc(pc);
        if (m_breakPending)
            add(ZOFFKind::Break);
        m_breakPending = false;
    }
    void locus(int line, unsigned file)
    {
        m_line = line;
        m_file = file;
        m_locus = m_loci++;
        m_records.lit(1 + int(file)).tag(T::Alias).lit(line).tag(T::Locus);
        add(ZOFFKind::Locus).line = line;
    }
    void marker()
    {
        m_places[m_markers] = m_pc;
        m_records.tag(T::Null).lit(m_markers++).tag(T::MarkerDef);
        add(ZOFFKind::Marker);
    }
    void other()
    {
        switch (random(4)) {
        case 0:
            m_records.lit(0xAA).lit(3).tag(T::Fill);
            current(add(ZOFFKind::Fill));
            break;
        case 1:
            m_records.lit(7).lit(2).tag(T::DefBytes);
            current(add(ZOFFKind::DefBytes));
            bytes(std::string("\7\0", 2));
            break;
        case 2:
            m_records.lit(8).tag(T::Align);
            current(add(ZOFFKind::Align));
            break;
        default: m_records.lit(9).tag(T::LocalInsn); current(add(ZOFFKind::Local));
        }
    }
    void current(Item& item) { m_current = {m_section, size_t(&item - items[m_section].data())}; }
    Item* currentItem() { return m_current.first < 0 ? nullptr : &items[m_current.first][m_current.second]; }
    void bytes(const std::string& text)
    {
        m_records.text(text).tag(T::SetBytes);
        currentItem()->bytes += text;
    }
    // Something that changes the current instruction, with other records in between, perhaps.
    void late()
    {
        if (!currentItem())
            return;
        switch (random(3)) {
        case 0: bytes("late"); break;
        case 1:
            m_records.lit(77).tag(T::InstrumentationData);
            currentItem()->data = 77;
            break;
        default: m_records.lit(0x1234).tag(T::ExtensionWord); currentItem()->extension = 0x1234;
        }
    }
    void insn()
    {
        static const uint64_t opcodes[] = {0xDA3A,     0x0912,         0x35,
                                           0x0B123D45, 0x0B000B013D02, 0x0B010B020B033D04};
        uint64_t opcode = opcodes[random(3) ? random(2) : random(6)];
        unsigned words = opcode > 0xFFFFFFFFFFFF ? 4 : opcode > 0xFFFFFFFF ? 3 : opcode > 0xFFFF ? 2 : 1;
        std::string code;
        for (unsigned i = words; i-- > 0;) {
            code += char(opcode >> 16 * i);
            code += char(opcode >> (16 * i + 8));
        }
        bool hidden = random(9) == 0;
        int operand = -1;
        switch (random(12)) {
        case 0:
            operand = int(random(10));
            m_records.lit(operand);
            break;
        case 1:
            operand = AnyRegister + int(random(10));
            m_records.lit(operand - AnyRegister).tag(T::Register);
            break;
        case 2: {
            unsigned symbol = random(3);
            operand = AnySymbol + int(symbol);
            m_records.alias(6 + int(symbol)).tag(T::SymbolVal);
            break;
        }
        case 3: {
            // One that is placed already, or comes later, or never.
            int marker = int(random(unsigned(m_markers) + 20));
            operand = AnyMarker + marker;
            m_records.lit(marker).tag(T::MarkerRef);
            break;
        }
        default: m_records.tag(T::Null);
        }
        m_records.lit(int64_t(opcode)).tag(hidden ? T::HiddenInsn : T::Insn);
        Item& item = add(ZOFFKind::Processor);
        item.opcode = opcode;
        item.operand = operand;
        item.hidden = hidden;
        item.adjust = m_adjust;
        current(item);
        switch (random(12)) {
        case 0: break;
        case 1: bytes("xy"); break;
        case 2:
            bytes(code.substr(0, 1));
            bytes(code.substr(1));
            break;
        case 3:
            locus(m_line + 1, m_file);
            bytes(code);
            break;
        default: bytes(code);
        }
        if (random(8))
            setPC(m_pc < 0x7FFFFF00 ? m_pc + int(2 * words) : 0);
    }

    Records m_records;
    unsigned m_random;
    int m_section = 0;
    int32_t m_pc = -1;
    int m_locus = -1, m_loci = 0, m_line = 0, m_markers = 0;
    unsigned m_file = 0;
    int32_t m_adjust = 0;
    bool m_breakPending = false;
    std::pair<int, size_t> m_current{-1, 0};
    std::map<int, int32_t> m_places;
};

std::string describe(const Item& item)
{
    std::string text = std::to_string(int(item.kind)) + " pc " + std::to_string(item.pc) + " bytes ";
    for (char byte : item.bytes)
        text += std::to_string(uint8_t(byte)) + ",";
    return text + " op " + std::to_string(item.opcode) + " operand " + std::to_string(item.operand) + " at " +
           std::to_string(item.place) + (item.hidden ? " hidden" : "") + " adjust " +
           std::to_string(item.adjust) + " data " + std::to_string(item.data) + " ext " +
           std::to_string(item.extension) + " line " + std::to_string(item.line);
}

void describeOperand(const ZOFFExpr* operand, Item& item)
{
    if (!operand)
        return;
    switch (operand->kind()) {
    case ZOFFKind::ConstExpr: item.operand = int(static_cast<const ZOFFConstExpr*>(operand)->value()); break;
    case ZOFFKind::RegisterExpr:
        item.operand = AnyRegister + static_cast<const ZOFFRegisterExpr*>(operand)->registerNumber();
        break;
    case ZOFFKind::SymbolExpr:
        item.operand =
            AnySymbol + static_cast<const ZOFFSymbolExpr*>(operand)->symbol()->name()->view().back() - '0';
        break;
    default:
        item.operand = AnyMarker;
        item.place = static_cast<const ZOFFMarkerExpr*>(operand)->marker()->pc();
    }
}

Item itemOf(const ZOFFInsn* insn)
{
    Item item{insn->kind(), insn->pc(), -1};
    item.bytes.assign(insn->bytes().begin(), insn->bytes().end());
    if (insn->kind() == ZOFFKind::Processor) {
        item.opcode = static_cast<const ZOFFProcessorInsn*>(insn)->opcode();
        describeOperand(insn->operand(), item);
    }
    item.hidden = insn->hidden();
    item.adjust = insn->stackAdjust();
    item.data = insn->instrumentationData();
    item.extension = insn->extensionWord();
    if (insn->kind() == ZOFFKind::Locus)
        item.line = static_cast<const ZOFFLocus*>(insn)->line();
    return item;
}

// Items, and with `loci` which of them have the same source position.
void compare(const Program& program, const ModulePtr& module, bool loci)
{
    std::map<int, const ZOFFLocus*> numbered;
    size_t s = 0;
    for (ZOFFSection* section : module->sections()) {
        const std::vector<Item>& wanted = program.items[s++];
        size_t i = 0;
        const ZOFFInsn* before = nullptr;
        section->find([&](ZOFFInsn* insn) {
            if (i >= wanted.size())
                return ++i, true;
            EXPECT_EQ(describe(itemOf(insn)), describe(wanted[i])) << "section " << s << " item " << i;
            if (loci) {
                const ZOFFLocus* same = nullptr;
                if (wanted[i].locus >= 0)
                    same = numbered.emplace(wanted[i].locus, insn->locus()).first->second;
                EXPECT_EQ(insn->locus(), same);
                EXPECT_EQ(same != nullptr, wanted[i].locus >= 0);
            }
            EXPECT_EQ(insn->fragment()->section(), section);
            EXPECT_EQ(insn->previous(), insn == insn->fragment()->first() ? nullptr : before);
            before = insn;
            ++i;
            return testing::Test::HasFailure();
        });
        EXPECT_EQ(i, wanted.size());
    }
}

// What a section says of its bytes, those of the first few pages one by one.
std::vector<int64_t> bytesOf(ZOFFSection* section)
{
    section->forgetMetrics();
    std::vector<uint8_t> bytes(std::min<size_t>(size_t(section->getSize()), 0x30000), 0xEE);
    section->dump(bytes.size(), bytes.data());
    std::vector<int64_t> all{section->lowestAddress(), section->highestAddress(), section->accumulatedSize(),
                             section->hasHiddenInsns()};
    all.insert(all.end(), bytes.begin(), bytes.end());
    return all;
}

void expectSame(const std::vector<int64_t>& a, const std::vector<int64_t>& b)
{
    ASSERT_EQ(a.size(), b.size());
    auto [at, bt] = std::mismatch(a.begin(), a.end(), b.begin());
    if (at != a.end())
        ADD_FAILURE() << "entry " << at - a.begin() << ": " << *at << " and " << *bt;
}

ModulePtr readSpan(const std::string& bytes, bool keepLoci, bool verbose = false)
{
    ZOFFMAXQ30Reader reader(BytesInput(bytes).span(), keepLoci);
    return ModulePtr(reader.readFile(verbose));
}

ModulePtr readBlocks(const std::string& path)
{
    HFileBlocks file(path);
    ZOFFMAXQ30Reader reader(&file, true);
    return ModulePtr(reader.readFile(false));
}

} // namespace

TEST(ZOFFPackedItems, UnpackToWhatTheRecordsSay)
{
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        Program program(seed);
        for (int i = 0; i < 1'000; ++i)
            program.step();
        program.finish();
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::string file = program.file();
        compare(program, readSpan(file, true), true);
        compare(program, readSpan(file, false), false);
    }
}

TEST(ZOFFPackedItems, BytesAndPlacesAreThoseOfTheObjects)
{
    for (unsigned seed = 100; seed < 130; ++seed) {
        Program program(seed);
        for (int i = 0; i < 400; ++i)
            program.step();
        program.finish();
        ModulePtr packed = readSpan(program.file(), true);
        ModulePtr objects = readSpan(program.file(), false);
        for (uint32_t s = 0; s < 3; ++s) {
            ZOFFSection* section = packed->sections()[s];
            ZOFFSection* other = objects->sections()[s];
            expectSame(bytesOf(section), bytesOf(other));
            for (const Item& item : program.items[s]) {
                for (uint32_t address : {uint32_t(item.pc), uint32_t(item.pc) + 1}) {
                    const ZOFFInsn* at = section->findInsnAt(address);
                    const ZOFFInsn* otherAt = other->findInsnAt(address);
                    ASSERT_EQ(at ? describe(itemOf(at)) : "", otherAt ? describe(itemOf(otherAt)) : "");
                    at = section->findInsnInRange(address);
                    otherAt = other->findInsnInRange(address);
                    ASSERT_EQ(at ? describe(itemOf(at)) : "", otherAt ? describe(itemOf(otherAt)) : "");
                }
            }
            expectSame(bytesOf(section), bytesOf(other)); // now that some are unpacked
        }
    }
}

// Packed or not, a file that has several faults is refused for the first one.
TEST(ZOFFPackedItems, TooMuchCodeIsFoundBeforeALaterFault)
{
    Records r;
    r.module().section(".text").insn(0, 0xDA3A).text(std::string(0xFFFFF, 'x'));
    for (int i = 0; i < 64; ++i)
        r.tags({T::Dup, T::SetBytes});
    r.drop();
    for (int i = 0; i < 40; ++i)
        r.insn(2 + 2 * i, 0xDA3A);
    for (int i = 0; i < 2; ++i)
        r.tag(T::Null).lit(0).tag(T::MarkerDef);
    std::string file = r.file() + std::string(100, char(T::Nop));
    for (bool keepLoci : {true, false})
        EXPECT_EQ(failureOf([&] { readSpan(file, keepLoci); }), "bad object file: too much code");
}

TEST(ZOFFPackedItems, AnItemAskedForItsNeighboursUnpacksItsFragment)
{
    Records r;
    r.module().text("a.c").tag(T::MkFilename).lit(1).tag(T::MkAlias).section(".text");
    r.text("f").tag(T::MkSymbol).lit(5).tags({T::MarkerRef, T::SymbolDef});
    r.tag(T::Break).insn(0x10, 0xDA3A).alias(1).lit(30).tag(T::Locus);
    r.tag(T::Null).lit(5).tag(T::MarkerDef).insn(0x12, 0x8C0D);
    ModulePtr module = readSpan(r.file(), true);
    const ZOFFFragment* fragment = module->sections()[0]->currentFragment();
    EXPECT_NE(fragment->packed(), nullptr);
    auto* value = static_cast<ZOFFMarkerExpr*>(module->allSymbols()[0]->value());
    EXPECT_EQ(value->evaluate().value, 0x10);
    EXPECT_NE(fragment->packed(), nullptr);
    EXPECT_EQ(value->marker()->locus()->line(), 30);
    EXPECT_EQ(fragment->packed(), nullptr);
    EXPECT_EQ(value->marker()->next()->printPC(), "0012");
    EXPECT_EQ(value->marker()->previous(), value->marker()->locus());
}

// Through a window that is smaller than the file; each cut is one in the middle of some record, mostly.
TEST(ZOFFInput, AFileInBlocksReadsLikeOneInMemory)
{
    TempDir folder;
    Program program(7);
    for (int i = 0; i < 30'000; ++i)
        program.step();
    program.finish();
    std::string bytes = program.file();
    ASSERT_GT(bytes.size(), 300'000u);
    std::string path = folder.write("long.kvx", bytes);
    compare(program, readBlocks(path), true);

    auto outcome = [](auto&& read) {
        try {
            return std::to_string(read()->allSymbols().size());
        } catch (const HException& failure) {
            return failure.message();
        }
    };
    for (size_t size : {131'072u, 131'071u, 262'144u, 262'101u, 300'000u, 40u, 700u}) {
        for (size_t cut = size; cut < size + 12; ++cut) {
            std::string part = bytes.substr(0, cut);
            folder.write("long.kvx", part);
            EXPECT_EQ(outcome([&] { return readBlocks(path); }),
                      outcome([&] { return readSpan(part, true); }))
                << cut;
        }
    }
}
