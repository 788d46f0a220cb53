// The byte link to a JTAG adapter. A driver record owns its link and speaks the adapter's protocol on it.
#pragma once

#include "maxq30/jtag/HIOInterface.h"

class HDataLink : public HIOInterface {
public:
    // Discards what has not been read or sent yet, where the link holds such bytes.
    virtual void purge() {}
    // The read time-out, where the link has one that can be changed.
    virtual void setTimeout(unsigned long /* milliseconds */) {}
};
