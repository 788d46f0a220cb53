// The call frames of the last stop, or of a place that somebody asked for. The innermost one is there at
// once; those behind it are looked for on the stack when the first of them is asked for, since a step that
// goes on needs none.
#pragma once

#include "debug/run/Frame.h"

#include <cstdint>
#include <memory>
#include <vector>

class DebugProcessor;
class SymbolTables;
class TargetRegisterInterface;

class CallFrames {
public:
    CallFrames(DebugProcessor& processor, const SymbolTables& tables)
        : m_processor(processor), m_tables(tables)
    {
    }

    // From the stopped target's registers, which may be null.
    void locate(TargetRegisterInterface* target);
    // From registers of nobody; null leaves no frame.
    void locate(std::unique_ptr<TargetRegisterInterface> own);
    // The program goes on, so its stack is not looked at any more; frames that are there stay.
    void freeze() { m_complete = true; }
    void clear();

    // Innermost first. Both throw what a read of the stack throws.
    unsigned count();
    Frame* at(unsigned number); // null beyond the last

    // Null when there is none. No stack is read.
    Frame* innermost() const { return m_frames.empty() ? nullptr : m_frames.front().get(); }
    // Whether a frame that somebody kept is still one of these.
    bool holds(const Frame* frame) const;
    // Whether the innermost frame is the stopped target's.
    bool live() const { return innermost() && innermost()->live(); }

private:
    void complete();

    DebugProcessor& m_processor;
    const SymbolTables& m_tables;
    std::vector<std::unique_ptr<Frame>> m_frames;
    bool m_complete = true;
};
