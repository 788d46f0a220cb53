#include "driver/session/Release.h"

#include <cstdio>

void RELEASE_printVersionToStderr(const char* program)
{
    fprintf(stderr, "Forgeline for MAXQ30 %s - Release 2.0.0.2009012302.4051\n", program);
    fprintf(stderr, "Downloads, verifies, runs and debugs programs on MAXQ30 targets\n");
}
