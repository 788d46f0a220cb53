// The USB JTAG adapter as driver functions. Its firmware runs whole scans, so there are commands for
// scans only: the pin slots of the record throw.
#pragma once

struct _maxqd_t;

// Binds the adapter to a record. The `device` of its `open` is a `const USBDevice*`; bits 8 to 15 of the
// flags are the JTAG clock divider, for which the adapter has no command.
void MAXQD_initTetherUSBDriver(_maxqd_t* maxqd);

// Writes all of the bytes through the link or throws; nothing for a length of 0 or less.
void linkWrite(_maxqd_t* maxqd, const unsigned char* bytes, int length);
