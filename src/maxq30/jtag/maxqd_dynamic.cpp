#include "maxq30/jtag/maxqd_dynamic.h"

#include "maxq30/jtag/maxqd.h"
#include "maxq30/jtag/maxqd_jtag.h"

void MAXQD_dynamic_init(_maxqd_t* maxqd)
{
    maxqd->open = MAXQD_open;
    maxqd->close = MAXQD_close;
    maxqd->setState = MAXQD_setState;
    maxqd->setTDI = MAXQD_setTDI;
    maxqd->setTMS = MAXQD_setTMS;
    maxqd->setTCK = MAXQD_setTCK;
    maxqd->cycleTCK = MAXQD_cycleTCK;
    maxqd->multiCycleTCK = MAXQD_multiCycleTCK;
    maxqd->getTDO = MAXQD_getTDO;
    maxqd->setNRST = MAXQD_setNRST;
    maxqd->trst = MAXQD_trst;
    maxqd->shiftInIR = MAXQD_shiftInIR;
    maxqd->shiftInOutDR = MAXQD_shiftInOutDR;
    maxqd->multiShiftOutDR8 = MAXQD_multiShiftOutDR8;
    maxqd->multiShiftInDR8 = MAXQD_multiShiftInDR8;
    maxqd->loaderWrite = MAXQD_loaderWrite;
    maxqd->setSystemProgrammingBits = MAXQD_setSystemProgrammingBits;
    maxqd->setTimeout = MAXQD_setTimeout;
}
