// Debug access to a target for the life of this object: the program is stopped meanwhile, and goes on
// afterwards if it was running.
#pragma once

#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "support/Bracket.h"

class DebugAccess {
public:
    explicit DebugAccess(MAXQ30JTAGTargetInterface& target) : m_access(begin(target)) {}
    // The end of an access that went well, which throws when the resume fails. On the way out of a failure
    // the resume is sent all the same.
    void end() { m_access.end(); }

private:
    struct End {
        MAXQ30JTAGTargetInterface* target;
        void operator()() const { target->endDebugAccess(); }
    };
    static End begin(MAXQ30JTAGTargetInterface& target)
    {
        target.beginDebugAccess();
        return {&target};
    }
    Bracket<End> m_access;
};
