// Writes object files record by record, in the order in which a reader meets them. Strings go into the
// pool, which comes first in the file.
#pragma once

#include "support/HException.h"
#include "tests/support/MAXQ30Records.h" // installs the record
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFTags.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

class Records {
public:
    Records& tag(ZOFFTag tag) { return raw(uint8_t(tag)); }
    Records& tags(std::initializer_list<ZOFFTag> list)
    {
        for (ZOFFTag one : list)
            tag(one);
        return *this;
    }
    Records& raw(unsigned byte)
    {
        m_records += char(byte);
        return *this;
    }
    Records& lit(int64_t value)
    {
        encode(m_records, value);
        return *this;
    }
    Records& text(std::string_view bytes)
    {
        size_t offset = m_pool.find(bytes);
        if (offset == std::string::npos) {
            offset = m_pool.size();
            m_pool += bytes;
        }
        return lit(int64_t(offset)).lit(int64_t(bytes.size())).tag(ZOFFTag::MkString);
    }
    Records& alias(int n) { return lit(n).tag(ZOFFTag::Alias); }
    // Keeps a copy of the top of the stack under a number.
    Records& keep(int n) { return tag(ZOFFTag::Dup).lit(n).tag(ZOFFTag::MkAlias); }
    Records& drop() { return tag(ZOFFTag::Drop); }

    // The root, under alias 0.
    Records& module()
    {
        return tags({ZOFFTag::NullNull, ZOFFTag::Null, ZOFFTag::ScopeModule}).keep(0).drop();
    }
    Records& section(std::string_view name, uint32_t flags = 0x80001)
    {
        return text(name).tags({ZOFFTag::MkSection, ZOFFTag::Section}).lit(flags).tag(ZOFFTag::SetFlags);
    }
    Records& pc(int64_t at) { return lit(at).tag(ZOFFTag::SetPC); }
    // An instruction without an operand, with its bytes, at a place.
    Records& insn(int64_t at, unsigned opcode)
    {
        char bytes[] = {char(opcode), char(opcode >> 8)};
        return pc(at)
            .tag(ZOFFTag::Null)
            .lit(opcode)
            .tag(ZOFFTag::Insn)
            .text({bytes, 2})
            .tag(ZOFFTag::SetBytes);
    }
    Records& byte(int64_t at, unsigned value)
    {
        char bytes[] = {char(value)};
        return pc(at).lit(value).lit(1).tag(ZOFFTag::DefBytes).text({bytes, 1}).tag(ZOFFTag::SetBytes);
    }
    // A symbol whose value stands on the stack.
    Records& define(std::string_view name, int value)
    {
        return text(name).tag(ZOFFTag::MkSymbol).lit(value).tag(ZOFFTag::SymbolDef);
    }

    std::string file() const
    {
        std::string all;
        if (!m_pool.empty()) {
            encode(all, int64_t(m_pool.size()));
            all += char(ZOFFTag::StringPool);
            all += m_pool;
        }
        return all + m_records;
    }

    static void encode(std::string& out, int64_t value)
    {
        if (value >= 0 && value < 8) {
            out += char(value);
            return;
        }
        int count = 1;
        while (count < 8 && uint64_t(value) >> (8 * count))
            ++count;
        out += char(8);
        out += char(count);
        while (count-- > 0)
            out += char(uint64_t(value) >> (8 * count));
    }

private:
    std::string m_pool;
    std::string m_records;
};

struct Release {
    void operator()(ZOFFModule* module) const { ZOFFReader::release(module); }
};
using ModulePtr = std::unique_ptr<ZOFFModule, Release>;

class BytesInput {
public:
    explicit BytesInput(std::string_view bytes) : m_bytes(bytes) {}
    std::span<const unsigned char> span() const
    {
        return {reinterpret_cast<const unsigned char*>(m_bytes.data()), m_bytes.size()};
    }

private:
    std::string_view m_bytes;
};
