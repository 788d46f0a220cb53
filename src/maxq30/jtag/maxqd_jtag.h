// The generic functions of the JTAG driver: what each scan is in steps of TMS, TDI and TCK, through the pin
// slots of the record. A transport that binds the pins gets every scan from here; one that scans by itself
// has to put the same bits on them. Pins, link and time-out have no generic form: those functions stand for
// a transport without them.
#pragma once

struct _maxqd_t;

int MAXQD_open(_maxqd_t*, void* device, unsigned int flags, void* reserved); // 0
int MAXQD_close(_maxqd_t*);                                                  // 0
void MAXQD_setState(_maxqd_t*, unsigned int state);
void MAXQD_setTDI(_maxqd_t*, int level);
void MAXQD_setTMS(_maxqd_t*, int level);
void MAXQD_setTCK(_maxqd_t*, int level);
void MAXQD_cycleTCK(_maxqd_t*);
void MAXQD_multiCycleTCK(_maxqd_t*, unsigned long count);
int MAXQD_getTDO(_maxqd_t*); // 0
void MAXQD_setNRST(_maxqd_t*, int level);
unsigned long MAXQD_setTimeout(_maxqd_t*, unsigned long milliseconds); // 0

void MAXQD_trst(_maxqd_t*);
void MAXQD_shiftInIR(_maxqd_t*, unsigned char instruction);
unsigned char MAXQD_shiftInOutDR(_maxqd_t*, unsigned char in, unsigned char* status);
int MAXQD_multiShiftOutDR8(_maxqd_t*, unsigned char* buffer, unsigned long count);      // 1
int MAXQD_multiShiftInDR8(_maxqd_t*, const unsigned char* buffer, unsigned long count); // 1
// 1, or 0 when ten scans in a row were not accepted.
int MAXQD_loaderWrite(_maxqd_t*, const unsigned char* buffer, unsigned long count);
void MAXQD_setSystemProgrammingBits(_maxqd_t*, unsigned char bits);
