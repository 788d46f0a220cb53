#include "zoff/ZOFFItemPacker.h"

#include "support/Pool.h"
#include "zoff/ZOFFFragment.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFObject.h"

namespace {

// Four blocks fill a chunk of the pool.
constexpr size_t BlockSize = 2048 - 8;
// More than one item writes: its address, the file, the position or the item, and the link behind it.
constexpr size_t ItemRoom = 48;
constexpr size_t CodeRoom = 8;

uint8_t* newBlock()
{
    return static_cast<uint8_t*>(Pool::currentPool()->allocate(BlockSize));
}

} // namespace

void ZOFFItemPacker::open(ZOFFFragment* fragment, int32_t stackAdjust, ZOFFLocus* locus)
{
    m_cursor.pc = -1;
    m_cursor.file = nullptr;
    m_fragment = fragment;
    m_items = fragment->m_packed;
    bool again = m_items;
    if (!m_items)
        m_items = fragment->m_packed = new ZOFFPackedItems;
    startRun();
    makeReady(-1);
    if (again) {
        memcpy(m_items->m_link, &m_cursor.stream, sizeof m_cursor.stream);
        m_cursor.put(ZOFFPackedItems::SetPC, m_cursor.pc);
    } else {
        m_items->m_stream = m_cursor.stream;
    }
    if (again || stackAdjust != 0)
        m_cursor.put(ZOFFPackedItems::AdjustStack, stackAdjust);
    if (again || locus)
        m_cursor.put(ZOFFPackedItems::UseLocus, locus);
}

void ZOFFItemPacker::close()
{
    if (!m_items)
        return;
    finishRun();
    makeReady(m_cursor.pc);
    m_cursor.put(ZOFFPackedItems::Continue, static_cast<uint8_t*>(nullptr));
    m_items->m_link = m_cursor.stream - sizeof(uint8_t*);
    m_items = nullptr;
    m_fragment = nullptr;
}

void ZOFFItemPacker::makeReady(int32_t pc)
{
    // There is none at first, and no block lies at null.
    if (m_cursor.stream >= m_cursor.streamLimit) {
        uint8_t* block = newBlock();
        if (m_cursor.stream)
            m_cursor.put(ZOFFPackedItems::Continue, block);
        m_cursor.stream = block;
        m_cursor.streamLimit = block + BlockSize - ItemRoom;
    }
    if (m_cursor.code >= m_cursor.codeLimit) {
        finishRun();
        m_cursor.code = newBlock();
        m_cursor.codeLimit = m_cursor.code + BlockSize - CodeRoom;
        startRun();
    }
    if (m_cursor.pc != pc) {
        finishRun();
        m_cursor.put(ZOFFPackedItems::SetPC, pc);
        m_cursor.pc = pc;
        startRun();
    }
}

void ZOFFItemPacker::startRun()
{
    m_runStart = m_cursor.code;
    m_runPC = m_cursor.pc;
}

void ZOFFItemPacker::finishRun()
{
    auto count = uint32_t(m_cursor.code - m_runStart);
    if (count > 0)
        m_items->m_runs.push_back({nullptr, m_runStart, m_runPC, count});
    m_codeBytes += count;
    m_runStart = m_cursor.code;
}

void ZOFFItemPacker::addObject(ZOFFInsn* item)
{
    makeReady(m_cursor.pc);
    item->m_fragment = m_fragment;
    item->m_packed = true;
    m_cursor.put(ZOFFPackedItems::Object, item);
    if (item->kind() >= ZOFFKind::Marker)
        return; // never has bytes
    if (item->hidden())
        noteHidden();
    finishRun();
    m_items->m_runs.push_back({item, nullptr, 0, 0});
    startRun();
}

void ZOFFItemPacker::setStackAdjust(int32_t adjust)
{
    makeReady(m_cursor.pc);
    m_cursor.put(ZOFFPackedItems::AdjustStack, adjust);
}

void ZOFFItemPacker::resetLocus()
{
    makeReady(m_cursor.pc);
    *m_cursor.stream++ = ZOFFPackedItems::ResetLocus;
}

void ZOFFItemPacker::setMade(ZOFFFragment* fragment, const uint8_t* operation, ZOFFInsn* item)
{
    item->m_fragment = fragment;
    item->m_packed = true;
    fragment->m_packed->m_made.push_back({operation, item});
}
