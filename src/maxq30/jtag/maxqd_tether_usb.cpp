#include "maxq30/jtag/maxqd_tether_usb.h"

#include "maxq30/jtag/USBDeviceList.h"
#include "maxq30/jtag/UsbTetherDataLink.h"
#include "maxq30/jtag/maxqd.h"
#include "support/Bracket.h"
#include "support/Endian.h"
#include "support/HException.h"

#include <algorithm>

namespace {

enum Command : unsigned char {
    SessionReady = 0x80,
    Trst = 0x82,
    SetNRST = 0x83,
    ShiftInIR = 0x84,
    ShiftInOutDR = 0x85,
    MultiShiftInDR8 = 0x86,
    MultiShiftOutDR8 = 0x87,
    LoaderRead = 0x88,
    LoaderWrite = 0x89,
    SetSystemProgrammingBits = 0x8A,
};

constexpr unsigned char StartOfSession[] = {0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA}; // one byte a transfer

constexpr unsigned long MaxWrite = 1024;
constexpr unsigned long MaxRead = 64;

void linkRead(_maxqd_t* maxqd, unsigned char* bytes, int length)
{
    if (maxqd->link->read(bytes, length) != length)
        throw HException("read operation failed");
}

void command(_maxqd_t* maxqd, Command command, unsigned char argument)
{
    const unsigned char bytes[] = {command, argument};
    linkWrite(maxqd, bytes, sizeof bytes);
}

// The long forms tell the whole count first.
void announce(_maxqd_t* maxqd, Command command, unsigned long count)
{
    unsigned char bytes[5] = {command};
    Endian::packUINT32(bytes, 1, uint32_t(count), Endian::Little);
    linkWrite(maxqd, bytes, sizeof bytes);
}

void writeStream(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    while (count > 0) {
        unsigned long piece = std::min(count, MaxWrite);
        linkWrite(maxqd, buffer, int(piece));
        buffer += piece;
        count -= piece;
    }
}

void readStream(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
{
    while (count > 0) {
        unsigned long piece = std::min(count, MaxRead);
        linkRead(maxqd, buffer, int(piece));
        buffer += piece;
        count -= piece;
    }
}

int openAdapter(_maxqd_t* maxqd, void* device, unsigned int, void*)
{
    maxqd->link = new UsbTetherDataLink(*static_cast<const USBDevice*>(device));
    Bracket opening([maxqd] { MAXQD_closeLink(maxqd); });
    for (unsigned char byte : StartOfSession)
        linkWrite(maxqd, &byte, 1);
    const unsigned char ready = SessionReady;
    linkWrite(maxqd, &ready, 1);
    opening.dismiss();
    return 1;
}

void setState(_maxqd_t*, unsigned int) {}

void setTDI(_maxqd_t*, int)
{
    throw HException("setTDI not implemented");
}

void setTMS(_maxqd_t*, int)
{
    throw HException("setTMS not implemented");
}

void setTCK(_maxqd_t*, int)
{
    throw HException("setTCK not implemented");
}

void cycleTCK(_maxqd_t*)
{
    throw HException("cycleTCK not implemented");
}

void multiCycleTCK(_maxqd_t*, unsigned long)
{
    throw HException("multiCycleTCK not implemented");
}

int getTDO(_maxqd_t*)
{
    throw HException("getTDO not implemented");
}

void setNRST(_maxqd_t* maxqd, int level)
{
    command(maxqd, SetNRST, level ? 1 : 0);
}

void trst(_maxqd_t* maxqd)
{
    const unsigned char byte = Trst;
    linkWrite(maxqd, &byte, 1);
}

void shiftInIR(_maxqd_t* maxqd, unsigned char instruction)
{
    command(maxqd, ShiftInIR, instruction);
}

unsigned char shiftInOutDR(_maxqd_t* maxqd, unsigned char in, unsigned char* status)
{
    command(maxqd, ShiftInOutDR, in);
    unsigned char answer[2];
    linkRead(maxqd, answer, sizeof answer);
    if (status)
        *status = answer[0];
    return answer[1];
}

int multiShiftOutDR8(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
{
    announce(maxqd, MultiShiftOutDR8, count);
    readStream(maxqd, buffer, count);
    return 1;
}

int multiShiftInDR8(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    announce(maxqd, MultiShiftInDR8, count);
    writeStream(maxqd, buffer, count);
    return 1;
}

int loaderWrite(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    announce(maxqd, LoaderWrite, count);
    writeStream(maxqd, buffer, count);
    unsigned char result;
    linkRead(maxqd, &result, 1);
    return result;
}

int loaderRead(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
{
    announce(maxqd, LoaderRead, count);
    readStream(maxqd, buffer, count);
    return 1;
}

void setSystemProgrammingBits(_maxqd_t* maxqd, unsigned char bits)
{
    command(maxqd, SetSystemProgrammingBits, bits);
}

} // namespace

void linkWrite(_maxqd_t* maxqd, const unsigned char* bytes, int length)
{
    if (length > 0 && maxqd->link->write(bytes, length) != length)
        throw HException("hardware error: target JTAG adapter data link write timed out");
}

void MAXQD_initTetherUSBDriver(_maxqd_t* maxqd)
{
    MAXQD_init(maxqd);
    maxqd->link = nullptr;
    maxqd->open = openAdapter;
    maxqd->close = MAXQD_closeLink;
    maxqd->setState = setState;
    maxqd->setTDI = setTDI;
    maxqd->setTMS = setTMS;
    maxqd->setTCK = setTCK;
    maxqd->cycleTCK = cycleTCK;
    maxqd->multiCycleTCK = multiCycleTCK;
    maxqd->getTDO = getTDO;
    maxqd->setNRST = setNRST;
    maxqd->trst = trst;
    maxqd->shiftInIR = shiftInIR;
    maxqd->shiftInOutDR = shiftInOutDR;
    maxqd->multiShiftOutDR8 = multiShiftOutDR8;
    maxqd->multiShiftInDR8 = multiShiftInDR8;
    maxqd->loaderWrite = loaderWrite;
    maxqd->loaderRead = loaderRead;
    maxqd->setSystemProgrammingBits = setSystemProgrammingBits;
}
