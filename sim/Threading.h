// How one instruction hands over to the next.
//
// The operations call each other: each ends with a call of the one behind it, which the compiler makes a
// jump. So what a run has to keep stays in the registers of the arguments, and each place has its own
// prediction of what follows. Where compilers make no jumps of such calls the operations return instead, and
// Machine::execute calls the next one.
//
// An operation must not call anything on its way through this; what may call out does so in a function of its
// own (the "calling out" ones of Dispatch.cpp), so that no register has to be saved for it.
#pragma once

#include "sim/Machine.h"

namespace maxq30 {

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
#define MAXQ30_CALLS_STAY_CALLS
#endif
#endif
#if !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MAXQ30_CALLS_STAY_CALLS
#endif

// Ends a run: nothing is executed behind the instruction that returns this.
inline bool leave(Machine& m, Op* next, uint64_t left, uint64_t cycles)
{
    m.suspend(next, left, cycles);
    return false;
}

// The end of each instruction. True: Machine::execute goes on with `m.next`.
[[gnu::always_inline]] inline bool proceed(Machine& m, Op* next, uint64_t left, uint64_t cycles, uint32_t acc)
{
    if (--left == 0) [[unlikely]]
        return leave(m, next, left, cycles);
#ifdef MAXQ30_CALLS_STAY_CALLS
    static_cast<void>(acc);
    m.suspend(next, left, cycles);
    return true;
#else
    return next->run(m, next, left, cycles, acc);
#endif
}

// The end of an instruction that may have called out: IP may have been set since, and more.
inline bool proceedAfterCallingOut(Machine& m, Op* op, Op* following, uint64_t left, uint64_t cycles)
{
    Op* set = m.next;
    if (m.attention || set != op || following == &m.outside) [[unlikely]] {
        leave(m, following, left - 1, cycles);
        if (set != op)
            m.next = set;
        return false;
    }
    return proceed(m, following, left, cycles, *m.acc);
}

} // namespace maxq30
