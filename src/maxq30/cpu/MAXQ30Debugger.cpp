#include "maxq30/cpu/MAXQ30Debugger.h"

#include "debug/evaluation/DebugMarkerType.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/evaluation/VariableListBuilder.h"
#include "debug/run/Frame.h"
#include "debug/symbols/SymbolicDebug.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "target/TargetInterface.h"
#include "target/TargetRegisterInterface.h"
#include "target/memory/TargetMemoryInterface.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <cstdio>

namespace {

using R = MAXQ30Registers;

constexpr uint32_t WordAddressMask = 0xFFFFFF; // of a place in code, as it lies on the stack or in a register
constexpr uint32_t LongestScan = 0x1000;       // bytes of a statement that are looked through in one go
constexpr uint32_t DefaultEndOfStack = 0x800;
constexpr unsigned StackEntry = 4, StackScan = 2; // bytes
constexpr int DefaultStackAdjust = 1;
constexpr unsigned FirstSavedRegister = 2, LastSavedRegister = 15, SavedRegisterBytes = 4;
constexpr uint32_t StackWindow = 64; // bytes of the stack that are read at once
constexpr uint32_t StackOfBareFrame = 15;
constexpr unsigned RegistersOfModule = 16;    // that a value may run through
constexpr unsigned MaxJumpsInRange = 0x10000; // a range that jumps within itself for ever
constexpr unsigned MaxPrefixes = 3;
constexpr int DisassemblyColumns = 20;

constexpr uint16_t PrefixMask = 0x0F00, PrefixWord = 0x0B00, PrefixSourceBit = 0x0100;
constexpr uint16_t SourceIsRegister = 0x8000;

// What a word of the control set does when it is executed.
enum class Taken { Always, IfZ, IfC, IfE, IfS, IfNotZ, IfNotC, IfNotE, OnStepInto, IfLoop0, IfLoop1 };

struct Control {
    uint16_t word;
    Taken taken;
};

constexpr uint16_t ReturnFromInterruptBit = 0x80;
constexpr Control Returns[] = {
    {0x8C0D, Taken::Always}, {0x9C0D, Taken::IfZ},    {0xAC0D, Taken::IfC},    {0xBC0D, Taken::IfE},
    {0xCC0D, Taken::IfS},    {0xDC0D, Taken::IfNotZ}, {0xEC0D, Taken::IfNotC}, {0xFC0D, Taken::IfNotE},
};

constexpr uint16_t JumpMask = 0x7F00, CallWord = 0x3D00;
constexpr Control Jumps[] = {
    {0x0C00, Taken::Always},     {0x1C00, Taken::IfZ},    {0x2C00, Taken::IfC},     {0x3C00, Taken::IfE},
    {0x3D00, Taken::OnStepInto}, {0x4C00, Taken::IfS},    {0x4D00, Taken::IfLoop0}, {0x5C00, Taken::IfNotZ},
    {0x5D00, Taken::IfLoop1},    {0x6C00, Taken::IfNotC}, {0x7C00, Taken::IfNotE},
};

const Control* returnOf(uint16_t word)
{
    for (const Control& form : Returns)
        if (form.word == (word & ~ReturnFromInterruptBit))
            return &form;
    return nullptr;
}

const Control* jumpOf(uint16_t word)
{
    for (const Control& form : Jumps)
        if (form.word == (word & JumpMask))
            return &form;
    return nullptr;
}

bool isPrefix(uint16_t word)
{
    return (word & PrefixMask) == PrefixWord;
}

bool isTaken(Taken taken, TargetRegisterInterface& registers, bool stepOver)
{
    uint32_t flags = registers.getValue(R::PSF);
    switch (taken) {
    case Taken::Always: return true;
    case Taken::IfZ: return flags & R::FlagZ;
    case Taken::IfC: return flags & R::FlagC;
    case Taken::IfE: return flags & R::FlagE;
    case Taken::IfS: return flags & R::FlagS;
    case Taken::IfNotZ: return !(flags & R::FlagZ);
    case Taken::IfNotC: return !(flags & R::FlagC);
    case Taken::IfNotE: return !(flags & R::FlagE);
    case Taken::OnStepInto: return !stepOver;
    case Taken::IfLoop0: return registers.getValue(R::LC0) != 1;
    case Taken::IfLoop1: return registers.getValue(R::LC1) != 1;
    }
    return false;
}

} // namespace

// --- Registers and memories -------------------------------------------------------------------

void MAXQ30Debugger::setInterruptsEnabled(bool on)
{
    TargetRegisterInterface* live = checkedTarget().registers();
    TargetRegisterInterface* framed = getFrame(0) ? getFrame(0)->registers() : nullptr;
    for (TargetRegisterInterface* registers : {framed, live})
        if (registers) {
            uint32_t ic = registers->getValue(R::IC);
            registers->setValue(R::IC, on ? ic | R::GlobalInterruptEnable : ic & ~R::GlobalInterruptEnable);
        }
}

bool MAXQ30Debugger::getInterruptsEnabled()
{
    TargetRegisterInterface* registers = getFrame(0) ? getFrame(0)->registers() : checkedTarget().registers();
    return registers && (registers->getValue(R::IC) & R::GlobalInterruptEnable);
}

QString MAXQ30Debugger::getRegisterFlags(const QString& name) const
{
    // Each with the number of its bit.
    if (name == QLatin1String("PSF"))
        return QStringLiteral("register 2 E 0 1 C 1 1 S 6 1 Z 7 1;");
    if (name == QLatin1String("IC"))
        return QStringLiteral("register 1 IGE 0 1;");
    return {};
}

unsigned MAXQ30Debugger::getRegisterNumber(const QString& name)
{
    unsigned module = 0, index = 0;
    if (sscanf(name.toLatin1().constData(), "M%u[0x%x]", &module, &index) != 2)
        return 0;
    return (index << 4) + module;
}

bool MAXQ30Debugger::getRegisterValue(Frame* frame, unsigned number, uint64_t& value)
{
    if (frame && number < R::NumRegisters)
        value = frame->registers()->getValue(number);
    return true;
}

bool MAXQ30Debugger::setRegisterValue(Frame* frame, unsigned number, uint64_t value)
{
    if (frame && number < R::NumRegisters)
        setRegister(frame, number, uint32_t(value));
    return true;
}

QStringList MAXQ30Debugger::getMemorySpaces()
{
    return {QStringLiteral("Code"), QStringLiteral("Data")};
}

TargetMemoryInterface* MAXQ30Debugger::getMemorySegment(const QString& name) const
{
    TargetInterface& from = checkedTarget();
    return name == QLatin1String("Code") ? from.codeMemory() : from.dataMemory();
}

std::unique_ptr<TargetRegisterInterface> MAXQ30Debugger::createRegisters(uint32_t pc)
{
    auto registers = std::make_unique<MAXQ30Registers>();
    registers->setPC(pc);
    registers->setSP(StackOfBareFrame);
    return registers;
}

unsigned MAXQ30Debugger::numRegisterWords() const
{
    return unsigned(R::named().size());
}

std::unique_ptr<TargetRegisterInterface> MAXQ30Debugger::createRegisters(const unsigned* block)
{
    auto registers = std::make_unique<MAXQ30Registers>();
    for (unsigned number : R::named())
        registers->setValue(number, *block++);
    return registers;
}

// -1 for a name that means nothing. Registers without a name of their own are called as they are shown,
// "M8[2]".
int MAXQ30Debugger::registerNameToNumber(const char* name)
{
    unsigned module = 0, index = 0;
    int end = 0;
    if (sscanf(name, "M%u[%u]%n", &module, &index, &end) == 2 && end > 0 && !name[end])
        return module < R::NumModules && index < R::NumIndexes ? int(index << 4 | module) : -1;
    unsigned number = R().nameToNumber(name);
    bool isZero = name[0] == '0' || std::string_view(name) == "M0";
    return number == 0 && !isZero ? -1 : int(number);
}

QString MAXQ30Debugger::registerNumberToName(unsigned number)
{
    return QString::fromStdString(R().numberToName(number));
}

// Of an array of registers that of its elements.
unsigned MAXQ30Debugger::getRegisterLength(unsigned number)
{
    return R().sizeInBytes(number == R::ArrayLC ? R::LC0 : number == R::ArrayDP ? R::DP0 : number);
}

unsigned MAXQ30Debugger::nextRegisterNumber(unsigned number)
{
    return (R::indexOf(number) + 1) % RegistersOfModule << 4 | R::moduleOf(number);
}

bool MAXQ30Debugger::registerNumberLT(unsigned a, unsigned b)
{
    auto key = [](unsigned number) {
        return R::moduleOf(number) << 4 | R::indexOf(number) % RegistersOfModule;
    };
    return key(a) < key(b);
}

int MAXQ30Debugger::registerDereference(int base, int64_t index)
{
    if (index < 0 || index >= R::NumIndexes)
        return -1;
    auto i = int(index);
    int number = (i << 4) | base;
    if (base == R::ArrayLC)
        number = R::LC0 + (i << 4);
    else if (base == R::ArrayDP)
        number = i == 0 ? int(R::DP0) : i == 1 ? int(R::DP1) : (i << 4) | 15;
    return number < int(R::NumRegisters) ? number : -1;
}

void MAXQ30Debugger::getRegisters(Frame* frame, VariableListBuilder* builder)
{
    if (!frame)
        return;
    ExpressionContext context;
    context.frame = frame;
    setContext(context);
    builder->setExpressionContext(context);
    for (unsigned number : R::named()) {
        QString name = registerNumberToName(number);
        std::unique_ptr<MyMarker> marker =
            mkExpressionType(registerType(getRegisterLength(number)), number, DebugMarkerType::Register);
        formatVariable(name, QLatin1Char('@') + name, *marker, builder);
    }
}

// Little-endian; 0 where no memory is.
uint32_t MAXQ30Debugger::dataNumber(uint32_t address, unsigned size)
{
    unsigned char bytes[4] = {};
    readMemory(address, size, bytes);
    return uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
}

// --- Where an instruction leads ---------------------------------------------------------------

// The address at which the walk leaves the range, 0 when it meets a word that can change the flow.
uint32_t MAXQ30Debugger::isSequential(uint32_t address, uint32_t low, uint32_t high)
{
    while (address >= low && address < high) {
        uint16_t word = peekPC(address);
        if (returnOf(word) || jumpOf(word))
            return 0;
        address += 2;
    }
    return address;
}

uint32_t MAXQ30Debugger::nextInstruction(TargetRegisterInterface* registers, bool stepOver, uint32_t start,
                                         uint32_t length)
{
    uint32_t pc = registers->getPC();
    auto inRange = [start, length](uint32_t address) { return address >= start && address - start < length; };
    // A statement that claims to be longer is passed instruction by instruction.
    if (length <= LongestScan) {
        setDisassembleRange(start, length);
        if (length > 1 && inRange(pc))
            if (uint32_t behind = isSequential(pc, start, start + length))
                return behind;
    }
    for (unsigned jumped = 0; inRange(pc) && jumped < MaxJumpsInRange; ++jumped) {
        uint32_t next = 0;
        uint32_t destination = stepFrom(registers, stepOver, pc, next);
        if (destination == next || destination == pc)
            return destination;
        // A jump inside the range is followed; after it the registers say nothing about what comes.
        registers = nullptr;
        pc = destination;
    }
    return pc;
}

MAXQ30Debugger::Decoded MAXQ30Debugger::decode(uint32_t pc)
{
    Decoded insn;
    uint32_t address = pc;
    insn.word = peekPC(address);
    while (isPrefix(insn.word) && insn.prefixes < MaxPrefixes) {
        insn.value = insn.value << 8 | (insn.word & 0xFF);
        insn.sourceBit = insn.word & PrefixSourceBit;
        ++insn.prefixes;
        address += 2;
        insn.word = peekPC(address);
    }
    insn.next = address + 2;
    if (!(insn.word & SourceIsRegister))
        insn.value = insn.value << 8 | (insn.word & 0xFF);
    return insn;
}

bool MAXQ30Debugger::isCallAt(uint32_t address)
{
    return (decode(address).word & JumpMask) == CallWord;
}

// Where the instruction at pc leads, and the place behind it. Without registers a place that depends on
// them is the instruction itself.
uint32_t MAXQ30Debugger::stepFrom(TargetRegisterInterface* registers, bool stepOver, uint32_t pc,
                                  uint32_t& next)
{
    Decoded insn = decode(pc);
    next = insn.next;
    if (const Control* form = insn.prefixes == 0 ? returnOf(insn.word) : nullptr) {
        if (!registers)
            return pc;
        return isTaken(form->taken, *registers, stepOver)
                   ? (dataNumber(registers->getSP(), StackEntry) & WordAddressMask) * 2
                   : next;
    }
    const Control* form = jumpOf(insn.word);
    if (!form)
        return next;
    if (!registers)
        return pc;
    if (!isTaken(form->taken, *registers, stepOver))
        return next;
    uint32_t destination = next;
    if (!getJumpDestination(registers, insn, destination))
        return pc;
    return destination / 2 > WordAddressMask ? next : destination;
}

bool MAXQ30Debugger::getJumpDestination(TargetRegisterInterface* registers, const Decoded& insn,
                                        uint32_t& destination)
{
    if (!(insn.word & SourceIsRegister)) {
        destination = insn.prefixes > 0 ? (insn.value & WordAddressMask) * 2
                                        : destination + uint32_t(int8_t(insn.word & 0xFF) * 2);
        return true;
    }
    if (!registers)
        return false;
    unsigned source = (insn.word & 0xFF) | insn.sourceBit;
    bool isMemory = R::moduleOf(source) == 15;
    uint32_t words = isMemory ? readPointed(registers, R::indexOf(source)) : registers->getValue(source);
    destination = (words & WordAddressMask) * 2;
    return true;
}

// The sources of module 15: the two data pointers, and what lies at them in three widths.
uint32_t MAXQ30Debugger::readPointed(TargetRegisterInterface* registers, unsigned index)
{
    constexpr unsigned FirstOfDP1 = 10, LastOfDP1 = 19; // in the order of those of DP[0]
    bool second = index >= FirstOfDP1 && index <= LastOfDP1;
    uint32_t pointer = registers->getValue(second ? R::DP1 : R::DP0);
    switch (second ? index - FirstOfDP1 : index) {
    case 0:
    case 1:
    case 2: return dataNumber(pointer, 1);
    case 4:
    case 5:
    case 8: return dataNumber(pointer, 2);
    case 6:
    case 7:
    case 9: return dataNumber(pointer, 4);
    default: return pointer;
    }
}

// --- Calls ------------------------------------------------------------------------------------

uint32_t MAXQ30Debugger::endOfStack() const
{
    int64_t start = 0, size = 0;
    bool known = getLinkerSymbolValue("_RAM_Start_Address", start) && getLinkerSymbolValue("_RAM_Size", size);
    return known ? uint32_t(start + size) : DefaultEndOfStack;
}

// Null unless the instruction in front of an address is a call.
const ZOFFMAXQ30Insn* MAXQ30Debugger::callBefore(uint32_t address) const
{
    auto* call = dynamic_cast<const ZOFFMAXQ30Insn*>(tables().insnBefore(address));
    return call && call->isCall() ? call : nullptr;
}

namespace {

// The stack, read a window at a time. What is not there reads as 0.
class StackReader {
public:
    explicit StackReader(MAXQ30Debugger& debugger) : m_debugger(debugger) {}

    uint32_t entry(uint32_t address)
    {
        uint32_t value = 0;
        for (unsigned i = 0; i < StackEntry; ++i)
            value |= uint32_t(byte(address + i)) << 8 * i;
        return value;
    }

private:
    unsigned char byte(uint32_t address)
    {
        if (address < m_start || address - m_start >= m_bytes.size()) {
            uint32_t there = m_debugger.getMemoryRange(QStringLiteral("Data"), address);
            m_start = address;
            m_bytes.assign(there ? std::min(StackWindow, there) : 1, 0);
            m_debugger.readMemory(address, unsigned(m_bytes.size()), m_bytes.data());
        }
        return m_bytes[address - m_start];
    }

    MAXQ30Debugger& m_debugger;
    uint32_t m_start = 0;
    std::vector<unsigned char> m_bytes;
};

} // namespace

// Registers that a function has pushed lie right below its return address, those with the lowest numbers
// first. What lies below its stack pointer is not pushed yet, or no longer.
void MAXQ30Debugger::restoreRegisters(TargetRegisterInterface& caller, uint32_t place, uint32_t entry,
                                      uint32_t sp, const std::function<uint32_t(uint32_t)>& stack)
{
    const SymbolicDebug* table = tables().at(place);
    const ZOFFSymbol* function = table ? table->findFunctionSymbol(place) : nullptr;
    if (!function)
        return;
    auto mask = uint32_t(static_cast<const ZOFFFunctionType*>(function->type())->savedRegisters());
    uint32_t slot = entry;
    for (unsigned n = FirstSavedRegister; n <= LastSavedRegister; ++n) {
        if (!(mask >> n & 1))
            continue;
        slot -= SavedRegisterBytes;
        if (slot < sp || slot > entry)
            return;
        caller.setValue(n << 4 | R::ArrayA, stack(slot));
    }
}

std::vector<std::unique_ptr<Frame>> MAXQ30Debugger::generateBackTrace(Frame& innermost)
{
    std::vector<std::unique_ptr<Frame>> callers;
    auto* registers = static_cast<MAXQ30Registers*>(innermost.registers());
    uint32_t place = registers->getPC(), sp = registers->getSP(), end = endOfStack();
    StackReader reader(*this);
    auto stack = [&reader](uint32_t address) { return reader.entry(address); };
    uint32_t frameSP = sp; // of the frame whose caller is looked for
    if (const ZOFFInsn* insn = getInsnAt(place); insn && insn->stackAdjust() != DefaultStackAdjust)
        sp -= uint32_t(insn->stackAdjust());

    for (int count = 0; sp <= end && count < m_maximumCalls; ++count) {
        uint32_t returnAddress = (stack(sp) & WordAddressMask) * 2;
        const ZOFFMAXQ30Insn* call = callBefore(returnAddress);
        if (call) {
            uint32_t entry = sp;
            auto caller = std::make_unique<MAXQ30Registers>(registers);
            caller->setSP(entry + StackEntry);
            caller->setPC(returnAddress);
            restoreRegisters(*caller, place, entry, frameSP, stack);
            registers = caller.get();
            place = uint32_t(call->pc());
            callers.push_back(std::make_unique<Frame>(tables().at(place), std::move(caller), place));
            sp = frameSP = entry + StackEntry;
        }
        uint32_t previous = sp;
        if (call && call->stackAdjust() != DefaultStackAdjust)
            sp -= uint32_t(call->stackAdjust());
        else
            sp += StackScan;
        if (sp < previous)
            break;
    }
    return callers;
}

QString MAXQ30Debugger::disassemble(uint32_t address, uint32_t& length, bool& isJump, uint32_t& target)
{
    uint64_t opcode = 0;
    QString text;
    length = 0;
    uint16_t word = 0;
    do {
        word = peekPC(address + length);
        length += 2;
        opcode = opcode << 16 | word;
        text += QString::asprintf("%04x", unsigned(word));
    } while (isPrefix(word) && length < 2 * (MaxPrefixes + 1));
    ZOFFMAXQ30Insn insn(opcode);
    insn.setPC(long(address));
    isJump = insn.isJump(target);
    QString shown = QString::fromStdString(insn.printString());
    return text.leftJustified(DisassemblyColumns) + (shown.startsWith(u'\t') ? shown.mid(1) : shown);
}
