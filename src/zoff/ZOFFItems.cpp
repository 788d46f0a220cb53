#include "zoff/ZOFFItems.h"

#include "support/Endian.h"
#include "support/HException.h"
#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFSection.h"
#include "zoff/limits.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

void printNumber(std::string& out, int number)
{
    out += std::to_string(number);
}

void printOperand(std::string& out, const ZOFFExpr* operand)
{
    if (operand)
        operand->print(out);
}

int64_t resolved(const ZOFFExpr* operand)
{
    ZOFFEvaluation value = operand->evaluate();
    if (value.unresolved)
        throw HException(value.message);
    return value.value;
}

// The operand's value as the item's bytes, in the byte order of the target.
void encodeNumber(ZOFFInsn* insn, int size)
{
    uint8_t bytes[8] = {};
    Endian::packNumber(bytes, 0, uint64_t(resolved(insn->operand())), unsigned(size),
                       ZOFFProcessor::current().bigEndian ? Endian::Big : Endian::Little);
    insn->clearBytes();
    insn->appendBytes({reinterpret_cast<char*>(bytes), size_t(size)});
}

} // namespace

void ZOFFDefBytesInsn::print(std::string& out) const
{
    switch (m_size) {
    case 1: out += "\tDB\t"; break;
    case 2: out += "\tDW\t"; break;
    case 4: out += "\tDL\t"; break;
    default:
        out += "\tDC";
        printNumber(out, m_size);
        out += '\t';
    }
    printOperand(out, m_operand);
}

void ZOFFDefBytesInsn::encode()
{
    if (m_operand)
        encodeNumber(this, m_size);
}

int ZOFFDefAddrInsn::length() const
{
    return ZOFFProcessor::current().addressSize;
}

void ZOFFDefAddrInsn::print(std::string& out) const
{
    out += "\tDA\t";
    printOperand(out, m_operand);
}

void ZOFFDefAddrInsn::encode()
{
    if (m_operand)
        encodeNumber(this, length());
}

void ZOFFFillInsn::copyBytes(uint8_t* to) const
{
    if (m_count > 0)
        memset(to, m_fill & 0xFF, size_t(m_count));
}

void ZOFFFillInsn::print(std::string& out) const
{
    out += "\t.FILL\t";
    printNumber(out, m_count);
    out += ", ";
    printNumber(out, m_fill);
}

int ZOFFAlignInsn::length() const
{
    if (pc() == -1 || m_alignment <= 0)
        return 0;
    uint32_t beyond = uint32_t(pc()) % uint32_t(m_alignment);
    return beyond ? int(uint32_t(m_alignment) - beyond) : 0;
}

void ZOFFAlignInsn::print(std::string& out) const
{
    out += "\t.ALIGN\tBYTE[";
    printNumber(out, m_alignment);
    out += ']';
}

void ZOFFOriginInsn::print(std::string& out) const
{
    out += "\tORG\t";
    printNumber(out, m_origin);
}

int ZOFFSpaceInsn::length() const
{
    if (!m_operand)
        return 0;
    ZOFFEvaluation size = m_operand->evaluate();
    return size.unresolved ? 0 : int(int32_t(size.value));
}

void ZOFFSpaceInsn::print(std::string& out) const
{
    out += "\t.SPACE\t";
    printOperand(out, m_operand);
}

void ZOFFLinkIf::print(std::string& out) const
{
    out += "\tLINKIF\t";
    printOperand(out, m_operand);
}

void ZOFFEndLinkIf::print(std::string& out) const
{
    out += "\tENDLINKIF";
}

void ZOFFLocalInsn::print(std::string& out) const
{
    out += "\tLOCAL\t";
    if (m_name)
        out += m_name->view();
    out += " @ ";
    printOperand(out, m_operand);
}

// ---- INIT ----

ZOFFSection* (*ZOFFInitInsn::findSection)(const HString* name) = nullptr;

ZOFFInitInsn::ZOFFInitInsn(const HString* sectionName, ZOFFModule* module)
    : ZOFFInsn(ZOFFKind::Init), m_sectionName(sectionName), m_module(module)
{
}

ZOFFSection* ZOFFInitInsn::section() const
{
    if (!m_section)
        m_section = findSection ? findSection(m_sectionName)
                    : m_module  ? m_module->findSection(m_sectionName)
                                : nullptr;
    return m_section;
}

int ZOFFInitInsn::length() const
{
    ZOFFSection* from = section();
    if (!from)
        return 0;
    static int nesting = 0;
    if (m_visiting || nesting >= ZOFFLimits::InitNesting)
        throw HException("bad object file: section " + std::string(m_sectionName->view()) +
                         " is filled from itself");
    struct Visit {
        bool& visiting;
        explicit Visit(bool& flag) : visiting(flag)
        {
            visiting = true;
            ++nesting;
        }
        ~Visit()
        {
            visiting = false;
            --nesting;
        }
    } visit(m_visiting);
    return int(std::min<int64_t>(from->getSize(), std::numeric_limits<int>::max()));
}

uint8_t ZOFFInitInsn::getByte(int i) const
{
    if (!m_cachedBytes && section()) {
        int size = length();
        if (size > ZOFFLimits::CodeBytes)
            throw HException("bad object file: section " + std::string(m_sectionName->view()) +
                             " is too large");
        CurrentPool current(m_module && m_module->pool() ? m_module->pool() : Pool::currentPool());
        auto* bytes = static_cast<uint8_t*>(Pool::currentPool()->allocate(size_t(size)));
        memset(bytes, 0, size_t(size));
        m_section->dump(size_t(size), bytes);
        m_cachedBytes = bytes;
        m_cachedSize = size;
    }
    return i < m_cachedSize ? m_cachedBytes[i] : 0;
}

void ZOFFInitInsn::print(std::string& out) const
{
    out += "\t.INIT\t\"";
    out += m_sectionName->view();
    out += '"';
}
