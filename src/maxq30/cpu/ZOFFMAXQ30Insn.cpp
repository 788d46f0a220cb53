#include "maxq30/cpu/ZOFFMAXQ30Insn.h"

#include "support/HException.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFProcessor.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

using Names = std::array<std::string_view, 32>;

// Register names by module and index; an empty name has none of its own.
constexpr Names Module8{"AP", "APC",  "",     "",    "PSF", "IC", "IMR",  "",
                        "SC", "IPR0", "IPR1", "IIR", "",    "",   "CKCN", "WDCN"};
constexpr Names Module9{"A[0]", "A[1]", "A[2]",  "A[3]",  "A[4]",  "A[5]",  "A[6]",  "A[7]",
                        "A[8]", "A[9]", "A[10]", "A[11]", "A[12]", "A[13]", "A[14]", "A[15]"};
constexpr Names Module10{"ACC", "A[AP]"};
constexpr Names Module11{"PFX[0]", "PFX[1]", "PFX[2]", "PFX[3]", "PFX[4]", "PFX[5]", "PFX[6]", "PFX[7]"};
constexpr Names Module13{"@SP++", "SP", "IV", "", "", "", "LC[0]", "LC[1]", "@SPI++"};
constexpr Names Module14{"BP",
                         "@BP[OFFS++].B",
                         "@BP[OFFS--].B",
                         "OFFS",
                         "@BP[OFFS++].W",
                         "@BP[OFFS--].W",
                         "@BP[OFFS++].L",
                         "@BP[OFFS--].L",
                         "@BP[OFFS].B",
                         "@BP[OFFS].W",
                         "@BP[OFFS].L",
                         "FP"};
constexpr Names Module15{"@DP[0].B",   "@DP[0].B++", "@DP[0].B--", "DP[0]",    "@DP[0].W++",
                         "@DP[0].W--", "@DP[0].L++", "@DP[0].L--", "@DP[0].W", "@DP[0].L",
                         "@DP[1].B",   "@DP[1].B++", "@DP[1].B--", "DP[1]",    "@DP[1].W++",
                         "@DP[1].W--", "@DP[1].L++", "@DP[1].L--", "@DP[1].W", "@DP[1].L"};
constexpr const Names* Modules[16] = {nullptr, nullptr,   nullptr,   nullptr,  nullptr,   nullptr,
                                      nullptr, nullptr,   &Module8,  &Module9, &Module10, &Module11,
                                      nullptr, &Module13, &Module14, &Module15};

// Instructions without operands, by their whole opcode. All have a low nibble of 10 (plain operations)
// or 13 (returns).
struct PlainRow {
    uint16_t opcode;
    std::string_view text;
};
constexpr PlainRow Operations[] = {
    {0x8A1A, "CPL"},      {0x8A2A, "SLA"},         {0x8A3A, "SLA2"},        {0x8A4A, "RL"},
    {0x8A5A, "RLC"},      {0x8A6A, "SLA4"},        {0x8A7A, "XCHN"},        {0x8A8A, "XCH"},
    {0x8A9A, "NEG"},      {0x8AAA, "SR"},          {0x8ABA, "SRA4"},        {0x8ACA, "RR"},
    {0x8ADA, "RRC"},      {0x8AEA, "SRA2"},        {0x8AFA, "SRA"},         {0xCA0A, "MB1"},
    {0xCA1A, "MB2"},      {0xCA2A, "MB3"},         {0xCA3A, "MB4"},         {0xCA4A, "MW1"},
    {0xCA5A, "MW2"},      {0xCA6A, "SEB"},         {0xCA7A, "SEW"},         {0xCA8A, "XCHW"},
    {0xCA9A, "XCHE"},     {0xDA0A, "MOVE\tC, #0"}, {0xDA1A, "MOVE\tC, #1"}, {0xDA2A, "CPL\tC"},
    {0xDA3A, "NOP"},      {0x8C0D, "RET"},         {0x8C8D, "RETI"},        {0x9C0D, "RET\tZ"},
    {0x9C8D, "RETI\tZ"},  {0xAC0D, "RET\tC"},      {0xAC8D, "RETI\tC"},     {0xBC0D, "RET\tE"},
    {0xBC8D, "RETI\tE"},  {0xCC0D, "RET\tS"},      {0xCC8D, "RETI\tS"},     {0xDC0D, "RET\tNZ"},
    {0xDC8D, "RETI\tNZ"}, {0xEC0D, "RET\tNC"},     {0xEC8D, "RETI\tNC"},    {0xFC0D, "RET\tNE"},
    {0xFC8D, "RETI\tNE"},
};

// The table above, spread out by the bits in which its opcodes differ: bits 15 to 8 select the page, bits
// 7 to 4 the entry.
struct PlainIndex {
    std::array<std::array<uint8_t, 16>, 256> row{}; // row number plus 1; 0 is none
    constexpr PlainIndex()
    {
        uint8_t number = 0;
        for (const PlainRow& entry : Operations)
            row[entry.opcode >> 8][entry.opcode >> 4 & 15] = ++number;
    }
};
constexpr PlainIndex Plain;

std::string_view plainText(uint64_t opcode)
{
    if (opcode > 0xFFFF)
        return {};
    uint8_t row = Plain.row[opcode >> 8][opcode >> 4 & 15];
    return row && Operations[row - 1].opcode == opcode ? Operations[row - 1].text : std::string_view();
}

// Jumps, calls and loops by bits 14 to 8; the place follows.
constexpr std::string_view jumpText(unsigned pattern)
{
    switch (pattern) {
    case 0x0C: return "\tJUMP\t";
    case 0x1C: return "\tJUMP\tZ, ";
    case 0x2C: return "\tJUMP\tC, ";
    case 0x3C: return "\tJUMP\tE, ";
    case 0x3D: return "\tCALL\t";
    case 0x4C: return "\tJUMP\tS, ";
    case 0x4D: return "\tDJNZ\tLC[0], ";
    case 0x5C: return "\tJUMP\tNZ, ";
    case 0x5D: return "\tDJNZ\tLC[1], ";
    case 0x6C: return "\tJUMP\tNC, ";
    case 0x7C: return "\tJUMP\tNE, ";
    default: return {};
    }
}

// Arithmetic by bits 14 to 8, without a prefix or with the plain one.
constexpr std::string_view arithmeticText(unsigned pattern)
{
    switch (pattern) {
    case 0x1A: return "\tAND\t";
    case 0x2A: return "\tOR\t";
    case 0x3A: return "\tXOR\t";
    case 0x4A: return "\tADD\t";
    case 0x5A: return "\tSUB\t";
    case 0x6A: return "\tADDC\t";
    case 0x7A: return "\tSUBB\t";
    case 0x78: return "\tCMP\t";
    default: return {};
    }
}

// Operations behind the prefix that reaches the multiplier and its neighbours.
constexpr std::string_view extendedText(unsigned pattern)
{
    switch (pattern) {
    case 0x0A: return "\tBIC\t";
    case 0x1A: return "\tCLZ\t";
    case 0x2A: return "\tMLB1\t";
    case 0x3A: return "\tMLB2\t";
    case 0x4A: return "\tMLB3\t";
    case 0x5A: return "\tMLB4\t";
    case 0x6A: return "\tMLW1\t";
    case 0x7A: return "\tMLW2\t";
    default: return {};
    }
}

void printUnsigned(std::string& out, uint32_t value, int base = 10)
{
    char digits[16];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value, base).ptr);
}

void printHex(std::string& out, uint32_t value)
{
    if (value > 15)
        out += "0x";
    printUnsigned(out, value, value > 15 ? 16 : 10);
}

void printModule(std::string& out, unsigned number)
{
    unsigned module = number & 15, index = number >> 4;
    const Names* names = Modules[module];
    if (names && index < names->size() && !(*names)[index].empty()) {
        out += (*names)[index];
        return;
    }
    out += 'M';
    printUnsigned(out, module);
    out += '[';
    printUnsigned(out, index);
    out += ']';
}

void printDestination(std::string& out, uint64_t opcode)
{
    auto number = unsigned(opcode >> 8 & 0x7F);
    if (opcode > 0xFFFF)
        number |= unsigned(opcode >> 22 & 0x180);
    if (number == 13)
        out += "@--SP";
    else if (number == 40)
        out += "NUL";
    else
        printModule(out, number);
}

// The low bytes of the opcode's words, most significant first.
uint32_t immediate(uint64_t opcode)
{
    return uint32_t((opcode & 0xFF) | (opcode >> 8 & 0xFF00) | (opcode >> 16 & 0xFF0000) |
                    (opcode >> 24 & 0xFF000000));
}

} // namespace

std::string decodeModule(unsigned number)
{
    std::string text;
    printModule(text, number);
    return text;
}

std::string decodeDestinationRegister(uint64_t opcode)
{
    std::string text;
    printDestination(text, opcode);
    return text;
}

std::string hex(uint32_t value)
{
    std::string text;
    printHex(text, value);
    return text;
}

int ZOFFMAXQ30Insn::length() const
{
    return int(ZOFFProcessor::insnLength(m_opcode));
}

bool ZOFFMAXQ30Insn::isJump(uint32_t& target) const
{
    uint64_t pattern = m_opcode & 0x8F00;
    if ((m_opcode & 0xFF00) != 0x3D00 && pattern != 0x0C00 && pattern != 0x0D00)
        return false;
    if (m_opcode > 0xFFFF)
        target = uint32_t((m_opcode >> 8 & 0xFF00) | (m_opcode & 0xFF)) * 2;
    else
        target = uint32_t(pc()) + 2 + uint32_t(int8_t(m_opcode)) * 2;
    return true;
}

void ZOFFMAXQ30Insn::printSource(std::string& out, bool isData) const
{
    if (m_opcode & 0x8000) {
        auto number = unsigned(m_opcode & 0xFF);
        if (m_opcode > 0xFFFF)
            number |= unsigned(m_opcode >> 20 & 0x100);
        printModule(out, number);
        return;
    }
    if (isData)
        out += '#';
    if (m_operand) {
        m_operand->print(out);
        return;
    }
    uint32_t value = immediate(m_opcode);
    if (isData) {
        printHex(out, value);
    } else if (m_opcode > 0xFFFF) {
        printHex(out, value * 2);
    } else {
        int distance = 2 + 2 * int8_t(value);
        if (pc() != -1) {
            printHex(out, uint32_t(pc()) + uint32_t(distance));
            return;
        }
        out += ".+";
        char digits[16];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, distance).ptr);
    }
}

// The order of the rules matters: the first that matches gives the text.
void ZOFFMAXQ30Insn::print(std::string& out) const
{
    uint64_t op = m_opcode;
    if (std::string_view text = plainText(op); !text.empty()) {
        out += '\t';
        out += text;
        return;
    }
    auto bit = unsigned(op >> 4 & 15);
    switch (op & 0xFF0F) {
    case 0xAA0A:
        out += "\tOR\tC, ACC.";
        printUnsigned(out, bit);
        return;
    case 0xBA0A:
        out += "\tXOR\tC, ACC.";
        printUnsigned(out, bit);
        return;
    case 0xEA0A:
        out += "\tMOVE\tC, ACC.";
        printUnsigned(out, bit);
        return;
    case 0x9A0A:
        out += "\tAND\tC, ACC.";
        printUnsigned(out, bit);
        return;
    case 0xFA0A:
        out += "\tMOVE\tACC.";
        printUnsigned(out, bit);
        out += ", C";
        return;
    default: break;
    }
    if ((op & 0x800F) == 0x8007) {
        out += "\tMOVE\t";
        printDestination(out, op);
        out += '.';
        printUnsigned(out, bit & 7);
        out += ", #";
        printUnsigned(out, bit >> 3);
        return;
    }
    auto pattern = unsigned(op >> 8 & 0x7F);
    if (pattern == 0x0D) {
        out += "\tPUSH\t";
        printSource(out, true);
        return;
    }
    if ((op & 0x80FF) == 0x800D) {
        out += "\tPOP\t";
        printDestination(out, op);
        return;
    }
    if ((op & 0xF00) == 0x700) {
        out += "\tMOVE\tC, ";
        printSource(out, true);
        out += '.';
        printUnsigned(out, unsigned(op >> 12 & 7));
        return;
    }
    if (std::string_view text = jumpText(pattern); !text.empty()) {
        out += text;
        printSource(out, false);
        return;
    }
    auto prefix = unsigned(op >> 24 & 0xFF);
    std::string_view text = prefix == 0 || prefix == 0x0B ? arithmeticText(pattern)
                            : prefix == 0x2B              ? extendedText(pattern)
                                                          : std::string_view();
    if (!text.empty()) {
        out += text;
    } else {
        out += "\tMOVE\t";
        printDestination(out, op);
        out += ", ";
    }
    printSource(out, true);
}

// ---- the operand side ----

namespace {

constexpr uint16_t PlainPrefix = 0x0B00;

bool isJumpFamily(uint64_t op)
{
    return (op & 0xFF00) == 0x3D00 || (op & 0x8F00) == 0x0C00 || (op & 0x6F00) == 0x4D00;
}

int wordsFor(uint32_t value)
{
    return value > 0xFFFFFF ? 4 : value > 0xFFFF ? 3 : value > 0xFF ? 2 : 1;
}

// A code target that is out of reach: its number in words. Without a prefix it would read as a distance.
int wordsForTarget(uint32_t value)
{
    return std::max(2, wordsFor(value));
}

uint16_t wordOf(uint64_t opcode, int group)
{
    return uint16_t(opcode >> (16 * group));
}

} // namespace

bool ZOFFMAXQ30Insn::isNearFamily() const
{
    return isJumpFamily(m_opcode) && m_opcode <= 0xFFFF;
}

// The words that the template needs whatever the value: up to the highest prefix that is more than the
// plain one, since it selects registers.
int ZOFFMAXQ30Insn::templateWords() const
{
    int words = 4;
    while (words > 1 && (wordOf(m_opcode, words - 1) & 0xF000) == 0)
        --words;
    return words;
}

int ZOFFMAXQ30Insn::estimatedLength() const
{
    if (!m_operand)
        return length();
    ZOFFEvaluation value = m_operand->evaluate();
    int words = templateWords();
    if (value.unresolved)
        return 2 * words;
    if (isNearFamily() && uint64_t((value.value - pc()) / 2 + 127) < 255)
        return 2;
    int needed =
        isJumpFamily(m_opcode) ? wordsForTarget(uint32_t(value.value / 2)) : wordsFor(uint32_t(value.value));
    return 2 * std::max(words, needed);
}

void ZOFFMAXQ30Insn::encode()
{
    if (m_operand) {
        ZOFFEvaluation evaluation = m_operand->evaluate();
        if (evaluation.unresolved)
            throw HException(evaluation.message);
        int64_t value = evaluation.value;
        int64_t distance = (value - pc()) / 2 - 1;
        if (isNearFamily() && distance >= -128 && distance <= 127) {
            m_opcode = (m_opcode & 0xFF00) | (uint64_t(distance) & 0xFF);
        } else {
            bool isTarget = isJumpFamily(m_opcode);
            auto bits = uint32_t(isTarget ? value / 2 : value);
            int words = std::max(templateWords(), isTarget ? wordsForTarget(bits) : wordsFor(bits));
            uint64_t opcode = 0;
            for (int group = words - 1; group >= 0; --group) {
                uint16_t word = wordOf(m_opcode, group) & 0xFF00;
                if (group > 0 && word == 0)
                    word = PlainPrefix;
                opcode = opcode << 16 | word | (bits >> (8 * group) & 0xFF);
            }
            m_opcode = opcode;
        }
    }
    char bytes[8];
    int count = length();
    for (int i = 0; i < count; i += 2) {
        uint16_t word = wordOf(m_opcode, (count - i) / 2 - 1);
        bytes[i] = char(word & 0xFF);
        bytes[i + 1] = char(word >> 8);
    }
    clearBytes();
    appendBytes({bytes, size_t(count)});
}
