#include "zoff/ZOFFFragment.h"

#include "zoff/ZOFFMarker.h"

#include <cassert>

void ZOFFFragment::addInsn(ZOFFInsn* insn)
{
    assert(insn && !insn->m_fragment);
    unpack();
    link(insn);
}

void ZOFFFragment::link(ZOFFInsn* insn)
{
    insn->m_fragment = this;
    insn->m_previous = m_last;
    insn->m_next = nullptr;
    (m_last ? m_last->m_next : m_first) = insn;
    m_last = insn;
}

void ZOFFFragment::link(ZOFFInsn* insn, ZOFFLocus* locus)
{
    link(insn);
    insn->m_locus = locus;
    insn->m_packed = false;
}

// Items change their form only, so a fragment that is const is unpacked, too. When memory is out on the
// way, all count as packed still, and the next one to ask begins anew.
void ZOFFFragment::unpack() const
{
    if (!m_packed)
        return;
    m_first = m_last = nullptr;
    try {
        m_packed->unpack(const_cast<ZOFFFragment&>(*this));
    } catch (...) {
        for (ZOFFInsn* insn = m_first; insn; insn = insn->m_next)
            insn->m_packed = true;
        throw;
    }
    m_packed = nullptr;
}
