#include "maxq30/cpu/MAXQ30Debugger.h"

#include "debug/symbols/SymbolicDebug.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/cpu/ZOFFMAXQ30Insn.h"
#include "project/EnvironmentSettings.h"
#include "target/memory/TargetMemoryInterface.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <cstdio>

namespace {

using R = MAXQ30Registers;

constexpr uint32_t HighestCodeAddress = 0xFFFF;
constexpr uint32_t DefaultEndOfStack = 0x800;
constexpr unsigned StackEntry = 4; // bytes
constexpr unsigned StackScan = 2;
constexpr int DefaultStackAdjust = 1;
constexpr unsigned FirstSavedRegister = 2, LastSavedRegister = 15;
constexpr uint32_t StackOfBareFrame = 15;
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

constexpr Control returns[] = {
    {0x8C0D, Taken::Always}, {0x9C0D, Taken::IfZ},    {0xAC0D, Taken::IfC},    {0xBC0D, Taken::IfE},
    {0xCC0D, Taken::IfS},    {0xDC0D, Taken::IfNotZ}, {0xEC0D, Taken::IfNotC}, {0xFC0D, Taken::IfNotE},
};

constexpr uint16_t JumpMask = 0x7F00;
constexpr Control jumps[] = {
    {0x0C00, Taken::Always},     {0x1C00, Taken::IfZ},    {0x2C00, Taken::IfC},     {0x3C00, Taken::IfE},
    {0x3D00, Taken::OnStepInto}, {0x4C00, Taken::IfS},    {0x4D00, Taken::IfLoop0}, {0x5C00, Taken::IfNotZ},
    {0x5D00, Taken::IfLoop1},    {0x6C00, Taken::IfNotC}, {0x7C00, Taken::IfNotE},
};

const Control* returnOf(uint16_t word)
{
    for (const Control& form : returns)
        if (form.word == word)
            return &form;
    return nullptr;
}

const Control* jumpOf(uint16_t word)
{
    for (const Control& form : jumps)
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

TargetRegisterInterface* MAXQ30Debugger::createRegisters(uint32_t pc)
{
    auto registers = std::make_unique<MAXQ30Registers>();
    registers->setPC(pc);
    registers->setSP(StackOfBareFrame);
    return registers.release();
}

int MAXQ30Debugger::registerNameToNumber(const char* name)
{
    return int(MAXQ30Registers().nameToNumber(name));
}

QString MAXQ30Debugger::registerNumberToName(unsigned number)
{
    return QString::fromStdString(MAXQ30Registers().numberToName(number));
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
    setDisassembleRange(start, length);
    uint32_t end = start + length;
    uint32_t pc = registers->getPC();
    if (length > 1 && pc >= start && pc < end)
        if (uint32_t behind = isSequential(pc, start, end))
            return behind;
    for (unsigned jumped = 0; pc >= start && pc < end && jumped < MaxJumpsInRange; ++jumped) {
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

// Where the instruction at pc leads, and the place behind it. Without registers a place that depends on
// them is the instruction itself.
uint32_t MAXQ30Debugger::stepFrom(TargetRegisterInterface* registers, bool stepOver, uint32_t pc,
                                  uint32_t& next)
{
    Prefix prefix;
    uint32_t address = pc;
    uint16_t word = peekPC(address);
    while (isPrefix(word) && prefix.count < MaxPrefixes) {
        prefix.value = prefix.value << 8 | (word & 0xFF);
        prefix.sourceBit = word & PrefixSourceBit;
        ++prefix.count;
        address += 2;
        word = peekPC(address);
    }
    next = address + 2;
    if (!(word & SourceIsRegister))
        prefix.value = prefix.value << 8 | (word & 0xFF);
    if (const Control* form = prefix.count == 0 ? returnOf(word) : nullptr) {
        if (!registers)
            return pc;
        return isTaken(form->taken, *registers, stepOver) ? dataNumber(registers->getSP(), 2) * 2 : next;
    }
    const Control* form = jumpOf(word);
    if (!form)
        return next;
    if (!registers)
        return pc;
    if (!isTaken(form->taken, *registers, stepOver))
        return next;
    uint32_t destination = next;
    if (!getJumpDestination(registers, word, prefix, destination))
        return pc;
    return destination > HighestCodeAddress ? next : destination;
}

bool MAXQ30Debugger::getJumpDestination(TargetRegisterInterface* registers, uint16_t word,
                                        const Prefix& prefix, uint32_t& destination)
{
    if (!(word & SourceIsRegister)) {
        destination = prefix.count > 0 ? prefix.value * 2 : destination + uint32_t(int8_t(word & 0xFF) * 2);
        return true;
    }
    if (!registers)
        return false;
    unsigned source = (word & 0xFF) | prefix.sourceBit;
    bool isMemory = R::moduleOf(source) == 15;
    destination = (isMemory ? readPointed(registers, R::indexOf(source)) : registers->getValue(source)) * 2;
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

// The call that ends where the given address begins; a far one has prefix words in front.
const ZOFFMAXQ30Insn* MAXQ30Debugger::callBefore(uint32_t address) const
{
    for (unsigned words = 1; words <= MaxPrefixes + 1; ++words) {
        const ZOFFInsn* insn = getInsnAt(address - 2 * words);
        if (!insn)
            continue;
        auto* call = dynamic_cast<const ZOFFMAXQ30Insn*>(insn);
        return call && call->isCall() && unsigned(call->length()) == 2 * words ? call : nullptr;
    }
    return nullptr;
}

void MAXQ30Debugger::generateBackTrace(std::unique_ptr<Frame> innermost)
{
    const PropertyValue* setting =
        environment
            ? environment->findProperty(QStringLiteral("Environment/Debugger/Maximum Backtrace Calls"))
            : nullptr;
    int maxCalls = setting ? setting->toInt() : 0;
    auto* registers = static_cast<MAXQ30Registers*>(innermost->registers());
    uint32_t pc = registers->getPC(), sp = registers->getSP(), end = endOfStack();
    frames().clear();
    frames().push_back(std::move(innermost));
    if (const ZOFFInsn* insn = getInsnAt(pc); insn && insn->stackAdjust() != DefaultStackAdjust)
        sp -= uint32_t(insn->stackAdjust());

    for (int count = 0; sp <= end && count < maxCalls; ++count) {
        uint32_t returnAddress = dataNumber(sp, 2) * 2;
        const ZOFFMAXQ30Insn* call = callBefore(returnAddress);
        bool found = call != nullptr;
        if (found) {
            uint32_t entry = sp;
            auto caller = std::make_unique<MAXQ30Registers>(registers);
            caller->setSP(entry + StackEntry);
            caller->setPC(returnAddress);
            SymbolicDebug* table = symbols(pc);
            ZOFFSymbol* function = table ? table->findFunctionSymbol(pc) : nullptr;
            auto* type = function ? static_cast<const ZOFFFunctionType*>(function->type()) : nullptr;
            if (type && type->savedRegisters() != 0) {
                sp += uint32_t(type->frameSize());
                for (unsigned n = FirstSavedRegister; n <= LastSavedRegister; ++n)
                    if (type->savedRegisters() >> n & 1) {
                        caller->setValue(n, dataNumber(sp, 2));
                        sp += 2;
                    }
            }
            registers = caller.get();
            frames().push_back(std::make_unique<Frame>(symbols(returnAddress), caller.release(), false));
            pc = returnAddress;
            sp = entry + StackEntry;
        }
        uint32_t previous = sp;
        if (found && call->stackAdjust() != DefaultStackAdjust)
            sp -= uint32_t(call->stackAdjust());
        else
            sp += StackScan;
        if (sp < previous)
            break;
    }
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
