// Debug access to a target for the life of this object: the program is stopped meanwhile, and goes on
// afterwards if it was running.
#pragma once

#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "support/HException.h"

#include <utility>

class DebugAccess {
public:
    explicit DebugAccess(MAXQ30JTAGTargetInterface& target) : m_target(&target) { target.beginDebugAccess(); }
    // On the way out of a failure the resume is sent all the same; the first failure is the one to tell.
    ~DebugAccess()
    {
        try {
            end();
        } catch (const HException&) {
        }
    }
    DebugAccess(const DebugAccess&) = delete;
    DebugAccess& operator=(const DebugAccess&) = delete;

    // The end of an access that went well, which throws when the resume fails.
    void end()
    {
        if (MAXQ30JTAGTargetInterface* target = std::exchange(m_target, nullptr))
            target->endDebugAccess();
    }

private:
    MAXQ30JTAGTargetInterface* m_target;
};
