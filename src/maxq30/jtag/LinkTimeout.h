// A read time-out of the link for the life of this object; the earlier one comes back on every way out.
#pragma once

#include "maxq30/jtag/maxqd.h"

class LinkTimeout {
public:
    LinkTimeout(_maxqd_t* maxqd, unsigned long milliseconds)
        : m_maxqd(maxqd), m_earlier(maxqd->setTimeout(maxqd, milliseconds))
    {
    }
    // A script that ran meanwhile may have closed the link.
    ~LinkTimeout()
    {
        if (m_maxqd->link)
            m_maxqd->setTimeout(m_maxqd, m_earlier);
    }
    LinkTimeout(const LinkTimeout&) = delete;
    LinkTimeout& operator=(const LinkTimeout&) = delete;

private:
    _maxqd_t* m_maxqd;
    unsigned long m_earlier;
};
