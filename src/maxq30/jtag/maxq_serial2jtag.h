// The serial JTAG adapter: its binary protocol, as driver functions. A frame to the adapter begins with a
// zero byte and a command, which the adapter answers with one byte; or with a count, 1 to 255, and as many
// bytes to shift, which it answers with a status byte and the byte shifted out for each.
#pragma once

struct _maxqd_t;
class HSerialLink;

// Binds the adapter to a record. The `device` of its `open` is the port's name, a `const char*`; the other
// arguments play no part.
void MAXQD_initSerial2JTAGDriver(_maxqd_t* maxqd);

// How long each read waits while the prompt is looked for, in milliseconds: 100. For tests, which run on
// machines that may stall for longer.
extern unsigned long MAXQD_promptTimeout;

// The answer to a command.
int binaryCommand(HSerialLink* link, unsigned char command);
// Shift `count` bytes, 1 to 255, and answer the last status byte; the second stores what was shifted out
// while zeros were shifted in.
unsigned char binaryDataWrite(HSerialLink* link, const unsigned char* data, unsigned char count);
unsigned char binaryDataRead(HSerialLink* link, unsigned char* data, unsigned char count);
