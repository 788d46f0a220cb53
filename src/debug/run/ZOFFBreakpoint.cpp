#include "debug/run/ZOFFBreakpoint.h"

ZOFFBreakpoint::~ZOFFBreakpoint()
{
    while (m_record) {
        HBreakpoint* next = m_record->next;
        delete m_record;
        m_record = next;
    }
}

QString ZOFFBreakpoint::getDescription() const
{
    if (m_record->length < 2)
        return QString::asprintf("0x%x", m_record->address);
    return QString::asprintf("0x%x-0x%x", m_record->address, m_record->address + m_record->length - 1);
}

QString ZOFFBreakpoint::getAddress() const
{
    return QString::asprintf(m_record->isRegister ? "@r%u" : "0x%x", m_record->address);
}

void ZOFFBreakpoint::setStepping(bool over, uint32_t start, uint32_t length)
{
    m_stepping = true;
    m_stepOver = over;
    m_rangeStart = start;
    m_rangeLength = length;
}
