#include "maxq30/cpu/MAXQ30Registers.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int NotInMap = -1;
constexpr int WindowMapBytes = 4;
constexpr unsigned WindowModules = 5;
constexpr unsigned AccumulatorModule = 9;
constexpr unsigned Accumulators = 16;
constexpr int AccumulatorMapOffset = 0x290;

struct Named {
    const char* name;
    unsigned module;
    unsigned index;
    unsigned bytes;
    int mapOffset;
    constexpr unsigned number() const { return index << 4 | module; }
};

// The registers with names of their own. The A registers follow a rule instead.
constexpr Named NamedRegisters[] = {
    {"AP", 8, 0, 1, 0x280},        {"APC", 8, 1, 1, 0x281},     {"PSF", 8, 4, 2, 0x282},
    {"IC", 8, 5, 1, 0x284},        {"SC", 8, 8, 2, 0x286},      {"IPR0", 8, 9, 2, 0x288},
    {"IPR1", 8, 10, 2, 0x28A},     {"CKCN", 8, 14, 2, 0x28C},   {"WDCN", 8, 15, 1, 0x28E},
    {"PFX", 11, 0, 2, NotInMap},   {"IP", 12, 0, 4, 0x2D0},     {"SP", 13, 1, 4, 0x2D4},
    {"LC[0]", 13, 6, 2, 0x2D8},    {"LC[1]", 13, 7, 2, 0x2DA},  {"BP", 14, 0, 4, 0x2DC},
    {"OFFS", 14, 3, 4, 0x2E0},     {"FP", 14, 11, 4, NotInMap}, {"DP[0]", 15, 3, 4, 0x2E4},
    {"DP[1]", 15, 7, 4, NotInMap},
};

// A slot of the map that no register name claims.
constexpr unsigned LastSlotNumber = 13 << 4 | 15;
constexpr int LastSlotOffset = 0x2E8;

const Named* findNumber(unsigned number)
{
    for (const Named& r : NamedRegisters)
        if (r.number() == number)
            return &r;
    return nullptr;
}

bool isAccumulator(unsigned number)
{
    return (number & 15) == AccumulatorModule && number >> 4 < Accumulators;
}

} // namespace

MAXQ30Registers::MAXQ30Registers(MAXQ30Registers* other)
{
    for (unsigned number = 0; number < NumRegisters; ++number) {
        if (!sizeInBytes(number))
            continue;
        uint32_t value = other->getValue(number);
        if (number == FP)
            MAXQ30Registers::setValue1(OFFS, value - MAXQ30Registers::getValue1(BP));
        else
            MAXQ30Registers::setValue1(number, value);
    }
}

std::string MAXQ30Registers::numberToName(unsigned number)
{
    if (const Named* r = findNumber(number))
        return r->name;
    if (isAccumulator(number))
        return "A[" + std::to_string(number >> 4) + "]";
    return "M" + std::to_string(moduleOf(number)) + "[" + std::to_string(number >> 4) + "]";
}

unsigned MAXQ30Registers::nameToNumber(const char* name)
{
    for (const Named& r : NamedRegisters)
        if (!std::strcmp(r.name, name))
            return r.number();
    if (!std::strcmp(name, "A"))
        return ArrayA;
    if (!std::strcmp(name, "LC"))
        return ArrayLC;
    if (!std::strcmp(name, "DP"))
        return ArrayDP;
    if (std::isdigit(static_cast<unsigned char>(name[0])))
        return unsigned(std::strtoul(name, nullptr, 0));
    if (name[0] == 'M')
        return unsigned(std::strtoul(name + 1, nullptr, 10));
    for (unsigned n = 0; n < Accumulators; ++n)
        if (numberToName(n << 4 | AccumulatorModule) == name)
            return n << 4 | AccumulatorModule;
    return 0;
}

unsigned MAXQ30Registers::sizeInBytes(unsigned number)
{
    if (const Named* r = findNumber(number))
        return r->bytes;
    return isAccumulator(number) ? 4 : 0;
}

uint32_t MAXQ30Registers::getValue(unsigned number)
{
    return number == FP ? getValue1(BP) + getValue1(OFFS) : getValue1(number);
}

void MAXQ30Registers::setValue(unsigned number, uint32_t value)
{
    if (number == FP)
        setValue1(OFFS, value - getValue1(BP));
    else
        setValue1(number, value);
}

uint32_t MAXQ30Registers::getValue1(unsigned number)
{
    return number < NumRegisters ? storage(number) : 0;
}

void MAXQ30Registers::setValue1(unsigned number, uint32_t value)
{
    if (number < NumRegisters)
        storage(number) = value;
}

// The A registers stand between those of module 8 and the others.
std::span<const unsigned> MAXQ30Registers::named()
{
    static constexpr size_t Count = std::size(NamedRegisters) + Accumulators;
    static constexpr auto Numbers = [] {
        std::array<unsigned, Count> numbers{};
        size_t count = 0;
        bool listed = false;
        for (const Named& r : NamedRegisters) {
            if (!listed && r.module > AccumulatorModule) {
                for (unsigned n = 0; n < Accumulators; ++n)
                    numbers[count++] = n << 4 | AccumulatorModule;
                listed = true;
            }
            numbers[count++] = r.number();
        }
        return numbers;
    }();
    return Numbers;
}

int MAXQ30Registers::offsetInRegisterMap(unsigned number)
{
    if (number >= NumRegisters)
        return NotInMap;
    if (moduleOf(number) < WindowModules)
        return int(moduleOf(number) * NumIndexes + indexOf(number)) * WindowMapBytes;
    if (isAccumulator(number))
        return AccumulatorMapOffset + int(number >> 4) * 4;
    if (number == LastSlotNumber)
        return LastSlotOffset;
    const Named* r = findNumber(number);
    return r ? r->mapOffset : NotInMap;
}
