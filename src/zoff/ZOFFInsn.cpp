#include "zoff/ZOFFInsn.h"

#include "support/Pool.h"
#include "zoff/ZOFFFragment.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>

std::string ZOFFInsn::printString() const
{
    std::string text;
    print(text);
    return text;
}

std::string ZOFFInsn::printPC() const
{
    char text[16];
    snprintf(text, sizeof text, "%04X", unsigned(m_pc));
    return text;
}

std::string ZOFFInsn::printOpCode() const
{
    std::string text;
    for (uint8_t byte : bytes()) {
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    if (byteCount() < 4)
        text += '\t';
    return text;
}

void ZOFFInsn::unpackFragment() const
{
    m_fragment->unpack();
}

void ZOFFInsn::copyBytes(uint8_t* to) const
{
    for (int i = 0, count = length(); i < count; ++i)
        to[i] = getByte(i);
}

void ZOFFInsn::appendBytes(std::string_view more)
{
    if (more.empty())
        return;
    uint32_t count = m_byteCount;
    auto total = uint32_t(count + more.size());
    uint8_t* to = count > InlineBytes ? m_bytes : m_inline;
    if (total > InlineBytes && (count <= InlineBytes || total > std::bit_ceil(count))) {
        auto* grown = static_cast<uint8_t*>(Pool::currentPool()->allocate(std::bit_ceil(total)));
        memcpy(grown, to, count);
        m_bytes = to = grown;
    }
    memcpy(to + count, more.data(), more.size());
    m_byteCount = total & 0x3FFFFFFF;
}

void ZOFFProcessorInsn::copyBytes(uint8_t* to) const
{
    auto wanted = size_t(length());
    size_t there = std::min(wanted, bytes().size());
    memcpy(to, bytes().data(), there);
    memset(to + there, 0, wanted - there);
}
