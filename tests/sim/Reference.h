// The processor once more, in the plainest way: one instruction at a time, straight from its words, with
// nothing kept between them. The core is compared with it.
#pragma once

#include "sim/RegisterFile.h"
#include "sim/maxqsim.h"

#include <bit>
#include <optional>
#include <vector>

namespace maxq30 {

class Reference {
public:
    Reference(uint32_t codeWords, uint32_t dataBytes)
        : code(codeWords), data(dataBytes), taken(codeWords), executed(codeWords)
    {
        regs[reg::SP] = dataBytes;
    }

    void step()
    {
        if ((regs[reg::IC] & 3) == 1 && regs[reg::IIR] & regs[reg::IMR]) {
            push(ip);
            regs[reg::IC] |= InterruptInService;
            ip = regs[reg::IV];
            cycles += 2;
            return;
        }
        if (ip < code.size())
            ++executed[ip];
        uint32_t first = ip;
        m_count = 0;
        m_value = 0;
        m_jumped = false;
        uint16_t word = 0, prefix = 0;
        while (true) {
            if (ip + m_count >= code.size()) {
                if (ip < code.size())
                    ++taken[ip];
                events->onCodeError((ip + m_count) * 2);
                cycles += 1;
                return;
            }
            word = code[ip + m_count++];
            m_value = m_value << 8 | (word & 0xFF);
            if ((word & 0xF00) != 0xB00)
                break;
            prefix = word;
            if (m_count == 4) {
                m_count = 1;
                invalid();
                return;
            }
        }
        m_extra = 0;
        m_fromRegister = word & 0x8000;
        m_word = word;
        unsigned source = (word & 0xFF) | (prefix & 0x1000) >> 4,
                 destination = (word >> 8 & 0x7F) | (prefix & 0x6000) >> 6;
        if (!execute(source, destination)) {
            invalid();
            return;
        }
        cycles += m_count + m_extra;
        if (m_jumped)
            ++taken[first];
        else
            ip += m_count;
    }

    uint32_t& acc() { return regs[reg::A(regs[reg::AP])]; }
    uint32_t psf()
    {
        return regs[reg::PSF] | (acc() ? 0 : FlagZ) | (acc() >> 31 ? FlagS : 0) | (carry ? FlagC : 0) |
               (equal ? FlagE : 0);
    }

    std::vector<uint16_t> code;
    std::vector<uint8_t> data;
    std::vector<uint64_t> taken, executed;
    uint32_t regs[RegisterNumbers] = {};
    uint32_t ip = 0;
    bool carry = false, equal = false;
    uint64_t cycles = 0;
    MAXQSIMExtendedCallBacks* events = nullptr;

private:
    struct Access {
        unsigned width;
        int step;
        bool frame;
        unsigned pointer;
    };

    void invalid()
    {
        events->onInvalidInstruction(ip * 2);
        cycles += m_count;
        ip += m_count;
    }

    static std::optional<Access> access(unsigned number)
    {
        unsigned index = number >> 4;
        bool frame = (number & 15) == 14;
        if (!frame && ((number & 15) != 15 || index >= 20))
            return {};
        unsigned pointer = index >= 10 ? reg::DP1 : reg::DP0;
        if (!frame)
            index %= 10;
        auto with = [&](unsigned width, int direction) {
            return Access{width, direction * int(width), frame, pointer};
        };
        switch (index) {
        case 0: return frame ? std::nullopt : std::optional(with(1, 0));
        case 1: return with(1, 1);
        case 2: return with(1, -1);
        case 4: return with(2, 1);
        case 5: return with(2, -1);
        case 6: return with(4, 1);
        case 7: return with(4, -1);
        case 8: return frame ? with(1, 0) : with(2, 0);
        case 9: return frame ? with(2, 0) : with(4, 0);
        case 10: return frame ? std::optional(with(4, 0)) : std::nullopt;
        }
        return {};
    }
    uint32_t addressOf(const Access& a)
    {
        return a.frame ? regs[reg::BP] + regs[reg::OFFS] : regs[a.pointer];
    }
    void move(const Access& a) { regs[a.frame ? reg::OFFS : a.pointer] += uint32_t(a.step); }

    uint32_t load(uint32_t address, unsigned width)
    {
        if (width > 1 && address & 1)
            events->onDataAlignmentError(true, address--);
        uint32_t value = 0;
        for (unsigned i = width; i-- > 0;) {
            uint32_t at = address + i, inCode = at - 0x1000000;
            if (at < data.size() && address < data.size())
                value = value << 8 | data[at];
            else if (inCode < 2 * code.size() && address >= 0x1000000)
                value = value << 8 | (code[inCode / 2] >> inCode % 2 * 8 & 0xFF);
            else
                return events->onDataError(true, address), 0;
        }
        tell(true, address, width, value);
        return value;
    }
    void store(uint32_t address, unsigned width, uint32_t value)
    {
        if (width > 1 && address & 1)
            events->onDataAlignmentError(false, address--);
        if (uint64_t(address) + width > data.size())
            return events->onDataError(false, address);
        for (unsigned i = 0; i < width; ++i)
            data[address + i] = uint8_t(value >> 8 * i);
        tell(false, address, width, value);
    }
    void tell(bool read, uint32_t address, unsigned width, uint32_t value)
    {
        if (width == 4)
            events->onLongDataAccess(read, address, value);
        else
            events->onDataAccess(read, address, value & (width == 1 ? 0xFF : 0xFFFF), width == 1);
    }
    void push(uint32_t value) { store(regs[reg::SP] -= 4, 4, value); }

    bool isStored(unsigned number) { return RegisterMasks[number] && !access(number); }
    bool canRead(unsigned number)
    {
        unsigned index = number >> 4;
        switch (number & 15) {
        case 10: return index < 2;
        case 11: return index < 8;
        case 12: return index == 0;
        }
        return number == 0x0D || number == 0x8D || number == reg::FP || access(number) || isStored(number);
    }
    uint32_t read(unsigned number)
    {
        switch (number & 15) {
        case 10: return acc();
        case 11: return m_value >> 8 & 0xFFFF;
        case 12: return ip + m_count;
        }
        if (number == 0x0D || number == 0x8D) {
            if (number == 0x8D)
                regs[reg::IC] &= ~InterruptInService;
            uint32_t value = load(regs[reg::SP], 4);
            regs[reg::SP] += 4;
            ++m_extra;
            return value;
        }
        if (auto a = access(number)) {
            uint32_t address = addressOf(*a);
            move(*a);
            m_extra += a->width == 4;
            return load(address, a->width);
        }
        return number == reg::FP    ? regs[reg::BP] + regs[reg::OFFS]
               : number == reg::PSF ? psf()
                                    : regs[number];
    }
    bool canWrite(unsigned number)
    {
        return (number & 15) == 10 ? number < 0x100 : number == reg::FP || access(number) || isStored(number);
    }
    void write(unsigned number, uint32_t value)
    {
        if (auto a = access(number)) {
            uint32_t address = addressOf(*a);
            move(*a);
            m_extra += a->width == 4;
            store(address, a->width, value);
        } else if (number == reg::FP) {
            regs[reg::OFFS] = value - regs[reg::BP];
        } else if (number == reg::PSF) {
            equal = value & FlagE;
            carry = value & FlagC;
            regs[number] = value & 0xFFFF & ~(FlagE | FlagC | FlagS | FlagZ);
        } else if (number == reg::APC) {
            regs[number] = value & 0x47;
            if (value & 0x80)
                regs[reg::AP] = 0;
        } else {
            regs[number] = value & RegisterMasks[number];
        }
    }
    void result(uint32_t value)
    {
        acc() = value;
        unsigned bits = regs[reg::APC] & 7;
        if (bits < 1 || bits > 4)
            return;
        uint32_t mask = (1u << bits) - 1, ap = regs[reg::AP];
        regs[reg::AP] = (ap & ~mask) | ((regs[reg::APC] & 0x40 ? ap - 1 : ap + 1) & mask);
    }

    bool execute(unsigned source, unsigned destination);
    bool operate(unsigned destinationIndex, unsigned sourceIndex);
    void calculate(unsigned index, uint32_t value);

    unsigned m_count = 0, m_extra = 0;
    uint32_t m_value = 0;
    uint16_t m_word = 0;
    bool m_fromRegister = false, m_jumped = false;
};

inline bool Reference::execute(unsigned source, unsigned destination)
{
    unsigned module = destination & 15, index = destination >> 4;
    bool toBit = m_fromRegister && (source & 15) == 7;
    if (toBit && source >= 0x100)
        return false;
    if (m_fromRegister && (source & 15) == 10 && module == 10 && index < 8 && (index || source != 10))
        return operate(index, source >> 4);
    if (toBit) {
        // The accumulator itself, but none of its operations, and nothing that only takes a value.
        bool special = destination == 0x0D || destination == 0x28 || destination == 0x78 || module == 7;
        if (special || module == 12 || (module == 10 && destination != 10) || !canWrite(destination))
            return false;
        uint32_t bit = 1u << (source >> 4 & 7);
        auto changed = [&](uint32_t value) { return source & 0x80 ? value | bit : value & ~bit; };
        if (auto a = access(destination)) {
            m_extra += a->width == 4;
            write(destination, changed(load(addressOf(*a), a->width)));
        } else if (destination == 10) {
            acc() = changed(acc());
        } else {
            write(destination, changed(read(destination)));
        }
        return true;
    }

    if (m_fromRegister && !canRead(source))
        return false;
    auto value = [&] { return m_fromRegister ? read(source) : m_value; };
    bool call = destination == 0x3D;
    if ((module == 12 && index < 8) || call || destination == 0x4D || destination == 0x5D) {
        m_extra += call;
        bool states[8] = {true, acc() == 0, carry, equal, bool(acc() >> 31), acc() != 0, !carry, !equal};
        bool go = module == 12 ? states[index] : true;
        if (module == 13 && !call) {
            uint32_t& counter = regs[index == 4 ? reg::LC0 : reg::LC1];
            counter = (counter - 1) & 0xFFFF;
            go = counter != 0;
        }
        // The time of a return is the same when it is not taken.
        unsigned extra = m_extra;
        if (m_fromRegister &&
            (source == 0x0D || source == 0x8D || (access(source) && access(source)->width == 4)))
            ++extra;
        if (go) {
            bool near = !m_fromRegister && m_count == 1;
            uint32_t target = near ? ip + 1 + uint32_t(int32_t(int8_t(m_value))) : value();
            if (call)
                push(ip + m_count);
            ip = target;
            m_jumped = true;
        }
        m_extra = extra;
        return true;
    }
    if (destination == 0x0D) {
        push(value());
        ++m_extra;
    } else if (destination == 0x28) {
        value();
    } else if (destination == 0x78) {
        equal = acc() == value();
    } else if (module == 7 && index < 8) {
        carry = value() >> index & 1;
    } else if (module == 10 && index < 16) {
        calculate(index, value());
    } else if (module != 10 && canWrite(destination)) {
        write(destination, value());
    } else {
        return false;
    }
    return true;
}

inline void Reference::calculate(unsigned index, uint32_t value)
{
    uint32_t a = acc();
    uint64_t sum = uint64_t(a) + value, rest = uint64_t(a) - value;
    auto insert = [&](unsigned shift, uint32_t mask) {
        result((a & ~(mask << shift)) | (value & mask) << shift);
    };
    switch (index) {
    case 0: return result(value);
    case 1: return result(a & value);
    case 2: return result(a | value);
    case 3: return result(a ^ value);
    case 8: return result(a & ~value);
    case 9: return result(uint32_t(std::countl_zero(value)));
    case 14: return insert(0, 0xFFFF);
    case 15: return insert(16, 0xFFFF);
    case 6: sum += carry; [[fallthrough]];
    case 4: carry = sum >> 32; return result(uint32_t(sum));
    case 7: rest -= carry; [[fallthrough]];
    case 5: carry = rest >> 63; return result(uint32_t(rest));
    }
    insert(8 * (index - 10), 0xFF);
}

inline bool Reference::operate(unsigned destinationIndex, unsigned sourceIndex)
{
    if (sourceIndex >= 16)
        return false;
    uint32_t a = acc();
    int32_t s = int32_t(a);
    bool out = carry;
    auto bit = [&](unsigned n) { return bool(a >> n & 1); };
    auto give = [&](uint32_t value, bool newCarry) { return carry = newCarry, result(value), true; };
    switch (destinationIndex << 4 | sourceIndex) {
    case 0x01: return give(~a, out);
    case 0x02: return give(a << 1, bit(31));
    case 0x03: return give(a << 2, bit(30));
    case 0x04: return give(std::rotl(a, 1), out);
    case 0x05: return give(a << 1 | out, bit(31));
    case 0x06: return give(a << 4, bit(28));
    case 0x07: return give((a << 4 & 0xF0F0F0F0) | (a >> 4 & 0x0F0F0F0F), out);
    case 0x08: return give((a << 8 & 0xFF00FF00) | (a >> 8 & 0x00FF00FF), out);
    case 0x09: return give(uint32_t(-int64_t(a)), out);
    case 0x0A: return give(a >> 1, bit(0));
    case 0x0B: return give(uint32_t(s >> 4), bit(3));
    case 0x0C: return give(std::rotr(a, 1), out);
    case 0x0D: return give(a >> 1 | uint32_t(out) << 31, bit(0));
    case 0x0E: return give(uint32_t(s >> 2), bit(1));
    case 0x0F: return give(uint32_t(s >> 1), bit(0));
    case 0x40:
    case 0x41:
    case 0x42:
    case 0x43: return give(a >> 8 * sourceIndex & 0xFF, out);
    case 0x44: return give(a & 0xFFFF, out);
    case 0x45: return give(a >> 16, out);
    case 0x46: return give(uint32_t(int32_t(int8_t(a))), out);
    case 0x47: return give(uint32_t(int32_t(int16_t(a))), out);
    case 0x48: return give(std::rotl(a, 16), out);
    case 0x49: return give(std::rotl(a & 0x00FF00FF, 24) | std::rotl(a & 0xFF00FF00, 8), out);
    case 0x50: return carry = false, true;
    case 0x51: return carry = true;
    case 0x52: return carry = !carry, true;
    case 0x53: return true;
    }
    switch (destinationIndex) {
    case 1: return carry = out && bit(sourceIndex), true;
    case 2: return carry = out || bit(sourceIndex), true;
    case 3: return carry = out != bit(sourceIndex), true;
    case 6: return carry = bit(sourceIndex), true;
    case 7: return acc() = (a & ~(1u << sourceIndex)) | uint32_t(out) << sourceIndex, true;
    }
    return false;
}

} // namespace maxq30
