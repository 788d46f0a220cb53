// Numbers that stand for things of a stopped program in the editor's messages. They die when the program goes
// on; a number is not used again soon, so that one from before a resume is known for what it is.
#pragma once

#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"

#include <limits>
#include <utility>
#include <vector>

template <class Thing> class References {
public:
    // 0 when there are too many; editors take it for "has no children".
    int add(Thing thing)
    {
        if (m_things.size() == size_t(DapLimits::References))
            return 0;
        m_things.push_back(std::move(thing));
        return m_first + int(m_things.size()) - 1;
    }

    // Good until the next add(). Throws RequestFailure.
    const Thing& at(int number) const
    {
        if (number < m_first || size_t(number - m_first) >= m_things.size())
            throw RequestFailure(number > 0 && number < m_first
                                     ? "the reference is from before the program went on"
                                     : "unknown reference");
        return m_things[size_t(number - m_first)];
    }

    void clear()
    {
        m_first += int(m_things.size());
        m_things.clear();
        if (m_first > std::numeric_limits<int>::max() - DapLimits::References)
            m_first = 1;
    }

private:
    int m_first = 1;
    std::vector<Thing> m_things;
};
