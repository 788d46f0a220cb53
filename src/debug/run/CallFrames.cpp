#include "debug/run/CallFrames.h"

#include "debug/monitor/DebugProcessor.h"
#include "debug/symbols/SymbolTables.h"
#include "debug/symbols/SymbolicDebug.h"
#include "target/TargetRegisterInterface.h"

#include <algorithm>

void CallFrames::clear()
{
    m_frames.clear();
    m_complete = true;
}

void CallFrames::locate(TargetRegisterInterface* target)
{
    clear();
    if (!target)
        return;
    m_frames.push_back(std::make_unique<Frame>(m_tables.at(target->getPC()), target));
    m_complete = false;
}

void CallFrames::locate(std::unique_ptr<TargetRegisterInterface> own)
{
    clear();
    if (!own)
        return;
    SymbolicDebug* table = m_tables.at(own->getPC());
    m_frames.push_back(std::make_unique<Frame>(table, std::move(own)));
    m_complete = false;
}

bool CallFrames::holds(const Frame* frame) const
{
    return std::any_of(m_frames.begin(), m_frames.end(),
                       [frame](const std::unique_ptr<Frame>& entry) { return entry.get() == frame; });
}

// A caller may hold the innermost frame, so it keeps its place in memory.
void CallFrames::complete()
{
    if (m_complete)
        return;
    for (std::unique_ptr<Frame>& caller : m_processor.generateBackTrace(*innermost()))
        m_frames.push_back(std::move(caller));
    m_complete = true;
}

unsigned CallFrames::count()
{
    complete();
    return unsigned(m_frames.size());
}

Frame* CallFrames::at(unsigned number)
{
    if (number > 0)
        complete();
    return number < m_frames.size() ? m_frames[number].get() : nullptr;
}
