#include "debug/run/ZOFFBreakpoint.h"

ZOFFBreakpoint::ZOFFBreakpoint(Records records, bool temporary)
    : m_records(std::move(records)), m_temporary(temporary)
{
    for (size_t i = 0; i < m_records.size(); ++i)
        m_records[i]->next = i + 1 < m_records.size() ? m_records[i + 1].get() : nullptr;
}

QString ZOFFBreakpoint::getDescription() const
{
    if (record()->length < 2)
        return QString::asprintf("0x%x", record()->address);
    return QString::asprintf("0x%x-0x%x", record()->address, record()->address + record()->length - 1);
}

QString ZOFFBreakpoint::getAddress() const
{
    return QString::asprintf(record()->isRegister ? "@r%u" : "0x%x", record()->address);
}
