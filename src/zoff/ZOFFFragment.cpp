#include "zoff/ZOFFFragment.h"

#include <cassert>

void ZOFFFragment::addInsn(ZOFFInsn* insn)
{
    assert(insn && !insn->m_fragment);
    insn->m_fragment = this;
    insn->m_previous = m_last;
    insn->m_next = nullptr;
    (m_last ? m_last->m_next : m_first) = insn;
    m_last = insn;
}
