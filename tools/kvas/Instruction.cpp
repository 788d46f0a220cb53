#include "tools/kvas/Instruction.h"
#include "tools/kvas/Cursor.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Registers.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <unordered_map>

namespace kvas {

namespace {

using Form = Mnemonic::Form;

constexpr uint16_t FromRegister = 0x8000;
constexpr uint16_t PrefixWord = 0x0B00;
constexpr unsigned PopSource = 13, PushDestination = 13;
constexpr unsigned Accumulator = 10, CarryBits = 7, JumpModule = 12;

struct Entry {
    const char* name;
    Mnemonic mnemonic;
};

constexpr Entry entries[] = {
    {"SLA", {Form::Plain, 0x8A2A}},
    {"SLA2", {Form::Plain, 0x8A3A}},
    {"RL", {Form::Plain, 0x8A4A}},
    {"RLC", {Form::Plain, 0x8A5A}},
    {"SLA4", {Form::Plain, 0x8A6A}},
    {"XCHN", {Form::Plain, 0x8A7A}},
    {"XCH", {Form::Plain, 0x8A8A}},
    {"NEG", {Form::Plain, 0x8A9A}},
    {"SR", {Form::Plain, 0x8AAA}},
    {"SRA4", {Form::Plain, 0x8ABA}},
    {"RR", {Form::Plain, 0x8ACA}},
    {"RRC", {Form::Plain, 0x8ADA}},
    {"SRA2", {Form::Plain, 0x8AEA}},
    {"SRA", {Form::Plain, 0x8AFA}},
    {"MB1", {Form::Plain, 0xCA0A}},
    {"MB2", {Form::Plain, 0xCA1A}},
    {"MB3", {Form::Plain, 0xCA2A}},
    {"MB4", {Form::Plain, 0xCA3A}},
    {"MW1", {Form::Plain, 0xCA4A}},
    {"MW2", {Form::Plain, 0xCA5A}},
    {"SEB", {Form::Plain, 0xCA6A}},
    {"SEW", {Form::Plain, 0xCA7A}},
    {"XCHW", {Form::Plain, 0xCA8A}},
    {"XCHE", {Form::Plain, 0xCA9A}},
    {"NOP", {Form::Plain, 0xDA3A}},
    {"CPL", {Form::Complement, 0x8A1A}},
    {"AND", {Form::Operation, 0x1A00, 0, true}},
    {"OR", {Form::Operation, 0x2A00, 0, true}},
    {"XOR", {Form::Operation, 0x3A00, 0, true}},
    {"ADD", {Form::Operation, 0x4A00}},
    {"SUB", {Form::Operation, 0x5A00}},
    {"ADDC", {Form::Operation, 0x6A00}},
    {"SUBB", {Form::Operation, 0x7A00}},
    {"CMP", {Form::Operation, 0x7800}},
    {"BIC", {Form::Operation, 0x0A00, 0x2B00}},
    {"CLZ", {Form::Operation, 0x1A00, 0x2B00}},
    {"MLB1", {Form::Operation, 0x2A00, 0x2B00}},
    {"MLB2", {Form::Operation, 0x3A00, 0x2B00}},
    {"MLB3", {Form::Operation, 0x4A00, 0x2B00}},
    {"MLB4", {Form::Operation, 0x5A00, 0x2B00}},
    {"MLW1", {Form::Operation, 0x6A00, 0x2B00}},
    {"MLW2", {Form::Operation, 0x7A00, 0x2B00}},
    {"MOVE", {Form::Move, 0}},
    {"PUSH", {Form::Push, 0x0D00}},
    {"POP", {Form::Pop, 0}},
    {"JUMP", {Form::Jump, 0x0C00}},
    {"CALL", {Form::Call, 0x3D00}},
    {"DJNZ", {Form::Loop, 0x4D00}},
    {"RET", {Form::Return, 0x8C0D}},
    {"RETI", {Form::Return, 0x8C8D}},
};

// Conditions by their number in bits 12 to 14 of jumps and returns.
constexpr std::string_view conditions[] = {"", "Z", "C", "E", "S", "NZ", "NC", "NE"};

// The accumulator's own operations take the place of transports from module 10 to module 10. Those without
// operands have no prefix word; those on single bits are told by their last word.
bool isTakenWord(uint16_t word, bool prefixed)
{
    switch (word & 0xFF0F) {
    case 0x9A0A:
    case 0xAA0A:
    case 0xBA0A:
    case 0xEA0A:
    case 0xFA0A: return true;
    case 0x8A0A: return !prefixed && word != 0x8A0A; // only MOVE ACC, ACC is a transport
    case 0xCA0A: return !prefixed && word <= 0xCA9A;
    case 0xDA0A: return !prefixed && word <= 0xDA3A;
    default: return false;
    }
}

// Name of the operation that a transport to this register is, null when it is a transport and no more. A push
// is one, too. The operations outside module 10 are told by the seven bits of the last word.
const char* operationInto(unsigned destination)
{
    switch (destination & 0x7F) {
    case PushDestination: return destination == PushDestination ? nullptr : "PUSH";
    case 0x3D: return "CALL";
    case 0x4D:
    case 0x5D: return "DJNZ";
    default: break;
    }
    switch (destination & 0xF) {
    case CarryBits: return "MOVE C";
    case JumpModule: return "JUMP";
    default: break;
    }
    for (const Entry& entry : entries) {
        const Mnemonic& mnemonic = entry.mnemonic;
        if (mnemonic.form == Form::Operation &&
            destination == (mnemonic.word >> 8 | unsigned(mnemonic.prefix & 0x6000) >> 6))
            return entry.name;
    }
    return nullptr;
}

class Parser {
public:
    Parser(const Mnemonic& mnemonic, Cursor& cursor, ExpressionParser& expressions, Item& item)
        : m_mnemonic(mnemonic), m_cursor(cursor), m_expressions(expressions), m_item(item)
    {
    }

    void parse()
    {
        m_item.word = m_mnemonic.word;
        m_item.prefix = m_mnemonic.prefix;
        switch (m_mnemonic.form) {
        case Form::Plain: break;
        case Form::Operation: operation(); break;
        case Form::Move: move(); break;
        case Form::Push: source(false); break;
        case Form::Pop:
            destination();
            m_item.word |= FromRegister | PopSource;
            break;
        case Form::Jump: jump(); break;
        case Form::Call: source(true); break;
        case Form::Loop: loop(); break;
        case Form::Return:
            if (unsigned condition = acceptCondition(false))
                m_item.word |= uint16_t(condition << 12);
            break;
        case Form::Complement:
            if (m_cursor.acceptWord("C"))
                m_item.word = 0xDA2A;
            break;
        }
        m_item.size = m_item.prefix ? 2 : 1;
        // A value of zero needs no more words than the rest of the instruction does.
        if (m_item.operand && m_item.operand->isConstant() && !takesCodeTarget(m_item))
            m_item.size = uint8_t(wordsNeeded(m_item, m_item.operand->value));
    }

private:
    // Also tells "Z" in "JUMP Z, there" from a symbol of that name.
    unsigned acceptCondition(bool beforeComma)
    {
        Cursor::Mark mark = m_cursor.mark();
        std::string_view name = m_cursor.identifier();
        for (unsigned i = 1; i < std::size(conditions); ++i) {
            if (name == conditions[i] && (!beforeComma || m_cursor.accept(',')))
                return i;
        }
        m_cursor.back(mark);
        return 0;
    }

    void needPrefix(uint16_t bits) { m_item.prefix |= PrefixWord | bits; }

    static void refuseOperation(unsigned destination, uint32_t column)
    {
        if (const char* name = operationInto(destination))
            Cursor::failAt(column, std::string("this transport does not exist: its word is that of ") + name);
    }

    void setDestination(unsigned number)
    {
        m_item.word |= uint16_t((number & 0x7F) << 8);
        if (number > 0x7F)
            needPrefix(uint16_t((number & 0x180) << 6));
    }

    std::optional<unsigned> acceptRegister(bool asSource)
    {
        Cursor::Mark mark = m_cursor.mark();
        m_cursor.peek();
        std::string_view text = m_cursor.registerText();
        if (!text.empty()) {
            if (auto number = asSource ? sourceRegister(text) : destinationRegister(text))
                return number;
        }
        m_cursor.back(mark);
        return {};
    }

    void destination()
    {
        m_cursor.peek();
        uint32_t column = m_cursor.column();
        auto number = acceptRegister(false);
        if (!number)
            m_cursor.fail("expected a register to write to");
        refuseOperation(*number, column);
        setDestination(*number);
    }

    // Leaves the source in word and prefix, or as the operand.
    void source(bool isCode)
    {
        m_cursor.peek();
        uint32_t column = m_cursor.column();
        if (!isCode && m_cursor.accept('#')) {
            m_item.operand = m_expressions.parse(m_cursor);
            return;
        }
        if (auto number = acceptRegister(true)) {
            m_item.word |= uint16_t(FromRegister | (*number & 0xFF));
            if (*number > 0xFF)
                needPrefix(0x1000);
            if (isTaken(isCode))
                Cursor::failAt(column, "this transport does not exist: its word is another instruction");
            return;
        }
        if (!isCode)
            m_cursor.fail("expected a register or # and a value");
        m_item.operand = m_expressions.parse(m_cursor);
    }

    bool isTaken(bool isCode) const
    {
        if ((m_item.word & 0xF) == CarryBits)
            return true;
        // Returns are jumps. A destination beyond the word's seven bits makes it another word.
        return !isCode && !(m_item.prefix & 0x6000) && isTakenWord(m_item.word, m_item.prefix);
    }

    unsigned bitNumber(unsigned limit)
    {
        m_cursor.peek();
        uint32_t column = m_cursor.column();
        uint64_t bit = m_cursor.number();
        if (bit >= limit)
            Cursor::failAt(column, "the bit must be from 0 to " + std::to_string(limit - 1));
        return unsigned(bit);
    }

    // ". n" right behind a register or value.
    bool acceptBit()
    {
        return m_cursor.ahead(0) == '.' && Cursor::isDigit(m_cursor.ahead(1)) && m_cursor.accept('.');
    }

    // "C, ACC.n" behind AND, OR, XOR; MOVE has more to choose from.
    void operation()
    {
        if (!m_mnemonic.carryForm || !m_cursor.acceptWord("C")) {
            source(false);
            return;
        }
        m_cursor.expect(',', "behind C");
        if (!m_cursor.acceptWord("ACC") || !acceptBit())
            m_cursor.fail("expected ACC and a bit");
        m_item.word |= uint16_t(FromRegister | Accumulator | bitNumber(16) << 4);
    }

    void move()
    {
        if (m_cursor.acceptWord("C")) {
            m_cursor.expect(',', "behind C");
            moveToCarry();
            return;
        }
        m_cursor.peek();
        uint32_t column = m_cursor.column();
        auto number = acceptRegister(false);
        if (!number)
            m_cursor.fail("expected a register to write to");
        if (!acceptBit()) {
            refuseOperation(*number, column);
            setDestination(*number);
            m_cursor.expect(',', "between destination and source");
            source(false);
            return;
        }
        m_cursor.peek();
        column = m_cursor.column();
        unsigned bit = bitNumber(16);
        m_cursor.expect(',', "between destination and source");
        if (m_cursor.acceptWord("C")) {
            if (*number != Accumulator)
                Cursor::failAt(column, "C can only go to a bit of ACC");
            m_item.word = uint16_t(0xFA0A | bit << 4);
            return;
        }
        if (bit > 7)
            Cursor::failAt(column, "the bit must be from 0 to 7");
        m_cursor.expect('#', "and 0 or 1, or C");
        m_cursor.peek();
        column = m_cursor.column();
        int64_t value = m_expressions.number(m_cursor, 0, 1, "the bit's value");
        setDestination(*number);
        m_item.word |= uint16_t(FromRegister | CarryBits | bit << 4 | unsigned(value) << 7);
    }

    void moveToCarry()
    {
        m_cursor.peek();
        uint32_t column = m_cursor.column();
        if (m_cursor.accept('#')) {
            m_item.operand = m_expressions.parse(m_cursor);
            if (acceptBit()) {
                m_item.word = uint16_t(CarryBits << 8 | bitNumber(8) << 12);
                return;
            }
            if (!m_item.operand->isConstant() || uint64_t(m_item.operand->value) > 1)
                Cursor::failAt(column, "C takes #0, #1 or one bit of a value");
            m_item.word = m_item.operand->value ? 0xDA1A : 0xDA0A;
            m_item.operand = nullptr;
            return;
        }
        auto number = acceptRegister(true);
        if (!number)
            m_cursor.fail("expected a register or # and a value");
        if (!acceptBit())
            m_cursor.fail("expected '.' and a bit");
        if (*number == Accumulator) {
            m_item.word = uint16_t(0xEA0A | bitNumber(16) << 4);
            return;
        }
        if ((*number & 0xF) == CarryBits)
            Cursor::failAt(column, "this register is no source");
        m_item.word = uint16_t(FromRegister | CarryBits << 8 | bitNumber(8) << 12 | (*number & 0xFF));
        if (*number > 0xFF)
            needPrefix(0x1000);
    }

    void jump()
    {
        if (unsigned condition = acceptCondition(true))
            m_item.word |= uint16_t(condition << 12);
        source(true);
    }

    void loop()
    {
        m_cursor.peek();
        std::string_view counter = m_cursor.registerText();
        if (counter != "LC[0]" && counter != "LC[1]")
            m_cursor.fail("expected LC[0] or LC[1]");
        m_item.word |= counter == "LC[1]" ? 0x1000 : 0;
        m_cursor.expect(',', "behind the counter");
        source(true);
    }

    const Mnemonic& m_mnemonic;
    Cursor& m_cursor;
    ExpressionParser& m_expressions;
    Item& m_item;
};

unsigned wordsOf(uint64_t value)
{
    return value > 0xFFFFFF ? 4 : value > 0xFFFF ? 3 : value > 0xFF ? 2 : 1;
}

// Distance in words from behind a jump of one word. Addresses are 32 bits wide and wrap.
int32_t distance(const Item& item, int64_t target)
{
    return int32_t(uint32_t(target) - item.pc) / 2 - 1;
}

} // namespace

const Mnemonic* findMnemonic(std::string_view name)
{
    static const auto* table = [] {
        auto* map = new std::unordered_map<std::string_view, const Mnemonic*>;
        for (const Entry& entry : entries)
            map->emplace(entry.name, &entry.mnemonic);
        return map;
    }();
    auto found = table->find(name);
    return found == table->end() ? nullptr : found->second;
}

void parseInstruction(const Mnemonic& mnemonic, Cursor& cursor, ExpressionParser& expressions, Item& item)
{
    Parser(mnemonic, cursor, expressions, item).parse();
}

bool takesCodeTarget(const Item& item)
{
    return (item.word & 0xFF00) == 0x3D00 || (item.word & 0x8F00) == 0x0C00 || (item.word & 0xEF00) == 0x4D00;
}

unsigned wordsNeeded(const Item& item, int64_t value, bool mayBeNear)
{
    if (takesCodeTarget(item)) {
        int32_t d = distance(item, value);
        if (mayBeNear && d >= -128 && d <= 127)
            return 1;
        // One word would be taken for a distance, however small the address.
        return std::max(2u, wordsOf(uint32_t(value) / 2));
    }
    return std::max(item.prefix ? 2u : 1u, wordsOf(uint32_t(value)));
}

uint64_t encodeInstruction(const Item& item, int64_t value)
{
    auto v = uint32_t(value);
    if (takesCodeTarget(item)) {
        if (item.size == 1) {
            assert(wordsNeeded(item, value) == 1);
            return item.word | (uint32_t(distance(item, value)) & 0xFF);
        }
        v /= 2;
    }
    if (!item.operand)
        v = 0;
    uint64_t opcode = item.word | (v & 0xFF);
    for (unsigned group = 1; group < item.size; ++group) {
        uint64_t word = PrefixWord | (v >> (8 * group) & 0xFF);
        if (group == 1)
            word |= item.prefix;
        opcode |= word << (16 * group);
    }
    return opcode;
}

} // namespace kvas
