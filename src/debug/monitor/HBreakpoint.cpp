#include "debug/monitor/HBreakpoint.h"

const char* HBreakpoint::triggerName(int trigger)
{
    static constexpr const char* Names[NumTriggers] = {"Execute", "Read", "Write", "Read/Write"};
    return Names[trigger >= 0 && trigger < NumTriggers ? trigger : 0];
}

bool HBreakpoint::meets(uint32_t accessed, unsigned bytes) const
{
    uint32_t bits = mask & (bytes >= 4 ? 0xFFFFFFFF : (1u << 8 * bytes) - 1);
    uint32_t left = accessed & bits;
    uint32_t right = value & bits;
    switch (comparison) {
    case Equal: return left == right;
    case GreaterOrEqual: return left >= right;
    case LessOrEqual: return left <= right;
    case NotEqual: return left != right;
    case Less: return left < right;
    case Greater: return left > right;
    }
    return false;
}
