#include "maxq30/jtag/maxqd.h"

#include "maxq30/jtag/HDataLink.h" // deleted here
#include "maxq30/jtag/maxqd_dynamic.h"

namespace {

// Reading from the bootloader has no form in single pins: every transport binds its own.
int noLoaderRead(_maxqd_t*, unsigned char*, unsigned long)
{
    return 0;
}

} // namespace

void MAXQD_init(_maxqd_t* maxqd)
{
    maxqd->reserved = 0;
    maxqd->loaderRead = noLoaderRead;
    MAXQD_dynamic_init(maxqd);
}

unsigned char MAXQD_shiftOutDR8(_maxqd_t* maxqd)
{
    unsigned char byte = 0;
    maxqd->multiShiftOutDR8(maxqd, &byte, 1);
    return byte;
}

void MAXQD_shiftInDR8(_maxqd_t* maxqd, unsigned char byte)
{
    maxqd->multiShiftInDR8(maxqd, &byte, 1);
}

int MAXQD_closeLink(_maxqd_t* maxqd)
{
    delete maxqd->link;
    maxqd->link = nullptr;
    return 1;
}
