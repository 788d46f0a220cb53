// Binds a driver record to the generic functions.
#pragma once

struct _maxqd_t;

// Every slot but loaderRead, which has no generic form and stays as it is.
void MAXQD_dynamic_init(_maxqd_t* maxqd);
