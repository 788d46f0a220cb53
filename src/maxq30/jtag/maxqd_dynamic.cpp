#include "maxq30/jtag/maxqd_dynamic.h"

#include "maxq30/jtag/maxqd.h"
#include "maxq30/jtag/maxqd_jtag.h" // by names that a list makes

void MAXQD_dynamic_init(_maxqd_t* maxqd)
{
#define MAXQD_BIND(name) maxqd->name = MAXQD_##name;
    MAXQD_GENERIC_SLOTS(MAXQD_BIND)
#undef MAXQD_BIND
}
