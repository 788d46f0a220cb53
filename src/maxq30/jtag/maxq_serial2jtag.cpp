#include "maxq30/jtag/maxq_serial2jtag.h"

#include "maxq30/jtag/HSerialLink.h"
#include "maxq30/jtag/maxqd.h"
#include "support/HException.h"
#include "support/QTx.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

enum Command : unsigned char {
    SelectIR = 1,
    SelectDR = 2,
    ThreeBits = 3,
    ResetHigh = 4,
    ResetLow = 5,
    PulseTCK = 6,
    ReadTDO = 7,
    EightBits = 8,
    HighTMS = 9,
    LowTMS = 10,
    HighTDI = 11,
    LowTDI = 12,
};

constexpr unsigned Baud = 115200;
constexpr unsigned char CarriageReturn = 0x0D;
constexpr unsigned char Prompt = '>';
constexpr unsigned MaxTransfer = 255; // the count of a frame is one byte

// Finding the text mode's prompt.
constexpr unsigned DTRPulse = 10; // milliseconds
constexpr int DrainBytes = 230;
constexpr int MaxFailedReads = 3;
constexpr int MaxStrayBytes = 1000;

HSerialLink* linkOf(_maxqd_t* maxqd)
{
    return static_cast<HSerialLink*>(maxqd->link);
}

[[noreturn]] void noEcho(int response)
{
    throw HException(QStringLiteral("Can't establish communications with the JTAG adapter "
                                    "(no echo response #%1)")
                         .arg(response));
}

void writeByte(HSerialLink* link, unsigned char byte)
{
    if (link->write(&byte, 1) != 1)
        throw HException("Unable to write to serial port");
}

void drainInput(HSerialLink* link)
{
    unsigned char ignored[DrainBytes];
    link->read(ignored, DrainBytes);
}

// Asks again after each stray byte; a read that yields nothing is only waited over.
void findPrompt(HSerialLink* link)
{
    writeByte(link, CarriageReturn);
    int failedReads = 0;
    for (int strayBytes = 0; strayBytes < MaxStrayBytes;) {
        unsigned char byte;
        if (link->read(&byte, 1) != 1) {
            if (++failedReads > MaxFailedReads)
                noEcho(1);
        } else if (byte == Prompt) {
            return;
        } else {
            ++strayBytes;
            writeByte(link, CarriageReturn);
        }
    }
    noEcho(1);
}

void confirmPrompt(HSerialLink* link)
{
    writeByte(link, CarriageReturn);
    for (int strayBytes = 0; strayBytes < MaxStrayBytes; ++strayBytes) {
        unsigned char byte;
        if (link->read(&byte, 1) != 1)
            break;
        if (byte == Prompt)
            return;
    }
    noEcho(2);
}

// "Z" leaves the text mode; behind it the reset line goes low and high again.
void switchToBinaryMode(HSerialLink* link)
{
    const unsigned char bytes[] = {'Z', CarriageReturn, 0, ResetLow, 0, ResetHigh};
    constexpr int Answers = 5;
    unsigned char answers[Answers];
    if (link->write(bytes, sizeof bytes) != sizeof bytes || link->read(answers, Answers) != Answers)
        throw HException("Cannot switch to binary mode");
}

void establish(HSerialLink* link)
{
    unsigned long timeout = link->timeout();
    link->setTimeout(MAXQD_promptTimeout);
    drainInput(link);
    link->setDTR(true);
    link->setDTR(false);
    QTx::sleep(DTRPulse);
    findPrompt(link);
    drainInput(link);
    confirmPrompt(link);
    drainInput(link);
    link->setTimeout(timeout);
    switchToBinaryMode(link);
    binaryCommand(link, SelectDR);
    binaryCommand(link, EightBits);
}

int openAdapter(_maxqd_t* maxqd, void* port, unsigned int, void*)
{
    auto link = std::make_unique<HSerialLink>(static_cast<const char*>(port), Baud, 8, HSerialLink::NoParity,
                                              HSerialLink::OneStopBit);
    establish(link.get());
    maxqd->link = link.release(); // the record's from now on
    return 1;
}

// A command that the adapter echoes.
void pinCommand(_maxqd_t* maxqd, Command command, const char* failure)
{
    if (binaryCommand(linkOf(maxqd), command) != command)
        throw HException(failure);
}

void setTDI(_maxqd_t* maxqd, int level)
{
    pinCommand(maxqd, level ? HighTDI : LowTDI, "Cannot set TDI");
}

void setTMS(_maxqd_t* maxqd, int level)
{
    pinCommand(maxqd, level ? HighTMS : LowTMS, "Cannot set TMS");
}

// The adapter has whole pulses only.
void setTCK(_maxqd_t*, int) {}

void cycleTCK(_maxqd_t* maxqd)
{
    pinCommand(maxqd, PulseTCK, "Cannot cycle TCK");
}

void multiCycleTCK(_maxqd_t* maxqd, unsigned long count)
{
    while (count-- > 0)
        cycleTCK(maxqd);
}

int getTDO(_maxqd_t* maxqd)
{
    return binaryCommand(linkOf(maxqd), ReadTDO);
}

void setNRST(_maxqd_t* maxqd, int level)
{
    pinCommand(maxqd, level ? ResetHigh : ResetLow, "Cannot set NRST");
}

void shiftInIR(_maxqd_t* maxqd, unsigned char instruction)
{
    HSerialLink* link = linkOf(maxqd);
    binaryCommand(link, SelectIR);
    binaryCommand(link, ThreeBits);
    binaryDataWrite(link, &instruction, 1);
    binaryCommand(link, SelectDR);
    binaryCommand(link, EightBits);
}

unsigned char shiftInOutDR(_maxqd_t* maxqd, unsigned char in, unsigned char* status)
{
    HSerialLink* link = linkOf(maxqd);
    const unsigned char frame[] = {1, in};
    if (link->write(frame, sizeof frame) != sizeof frame)
        throw HException("MAXQD_shiftInOutDR write failed");
    unsigned char answer[2];
    if (link->read(answer, sizeof answer) != sizeof answer)
        throw HException("MAXQD_shiftInOutDR read failed");
    if (status)
        *status = answer[0];
    return answer[1];
}

// Transfers longer than a frame go in several.
int multiShiftOutDR8(_maxqd_t* maxqd, unsigned char* buffer, unsigned long count)
{
    while (count > 0) {
        auto piece = static_cast<unsigned char>(std::min<unsigned long>(count, MaxTransfer));
        binaryDataRead(linkOf(maxqd), buffer, piece);
        buffer += piece;
        count -= piece;
    }
    return 1;
}

// False when the last status of a frame was 0, which means something to the bootloader alone.
bool shiftIn(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    bool taken = true;
    while (count > 0) {
        auto piece = static_cast<unsigned char>(std::min<unsigned long>(count, MaxTransfer));
        taken = binaryDataWrite(linkOf(maxqd), buffer, piece) != 0 && taken;
        buffer += piece;
        count -= piece;
    }
    return taken;
}

int multiShiftInDR8(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    shiftIn(maxqd, buffer, count);
    return 1;
}

// Pacing the bootloader is the adapter's matter. Behind a byte that the bootloader did not take in time the
// adapter sends nothing more of a frame, and its last status is 0.
int loaderWrite(_maxqd_t* maxqd, const unsigned char* buffer, unsigned long count)
{
    const unsigned char last = 0;
    bool taken = shiftIn(maxqd, buffer, count);
    return binaryDataWrite(linkOf(maxqd), &last, 1) != 0 && taken;
}

void setSystemProgrammingBits(_maxqd_t* maxqd, unsigned char bits)
{
    HSerialLink* link = linkOf(maxqd);
    maxqd->shiftInIR(maxqd, maxqd::SystemProgrammingInstruction);
    binaryCommand(link, ThreeBits);
    binaryDataWrite(link, &bits, 1);
    binaryCommand(link, EightBits);
}

unsigned long setTimeout(_maxqd_t* maxqd, unsigned long milliseconds)
{
    unsigned long earlier = linkOf(maxqd)->timeout();
    linkOf(maxqd)->setTimeout(milliseconds);
    return earlier;
}

// Sends a data frame and takes its answer, which holds a status byte before each byte shifted out.
void transfer(HSerialLink* link, const unsigned char* data, unsigned char count, unsigned char* answer)
{
    unsigned char frame[1 + MaxTransfer] = {count};
    memcpy(frame + 1, data, count);
    if (link->write(frame, 1 + count) != 1 + count)
        throw HException("Binary mode data write failed");
    int needed = 2 * count;
    int got = link->read(answer, needed);
    if (got != needed)
        throw HException(QString::asprintf("Binary mode data read failed (need %d, got %d)", needed, got));
}

} // namespace

unsigned long MAXQD_promptTimeout = 100;

int binaryCommand(HSerialLink* link, unsigned char command)
{
    const unsigned char frame[] = {0, command};
    unsigned char answer;
    if (link->write(frame, sizeof frame) != sizeof frame || link->read(&answer, 1) != 1)
        throw HException("Binary mode transaction failed");
    return answer;
}

unsigned char binaryDataWrite(HSerialLink* link, const unsigned char* data, unsigned char count)
{
    unsigned char answer[2 * MaxTransfer] = {};
    transfer(link, data, count, answer);
    return answer[2 * count - 2];
}

unsigned char binaryDataRead(HSerialLink* link, unsigned char* data, unsigned char count)
{
    const unsigned char zeros[MaxTransfer] = {};
    unsigned char answer[2 * MaxTransfer] = {};
    transfer(link, zeros, count, answer);
    for (unsigned i = 0; i < count; ++i)
        data[i] = answer[2 * i + 1];
    return answer[2 * count - 2];
}

void MAXQD_initSerial2JTAGDriver(_maxqd_t* maxqd)
{
    MAXQD_init(maxqd);
    maxqd->link = nullptr;
    maxqd->open = openAdapter;
    maxqd->close = MAXQD_closeLink;
    maxqd->setTDI = setTDI;
    maxqd->setTMS = setTMS;
    maxqd->setTCK = setTCK;
    maxqd->cycleTCK = cycleTCK;
    maxqd->multiCycleTCK = multiCycleTCK;
    maxqd->getTDO = getTDO;
    maxqd->setNRST = setNRST;
    maxqd->shiftInIR = shiftInIR;
    maxqd->shiftInOutDR = shiftInOutDR;
    maxqd->multiShiftOutDR8 = multiShiftOutDR8;
    maxqd->multiShiftInDR8 = multiShiftInDR8;
    maxqd->loaderWrite = loaderWrite;
    maxqd->loaderRead = multiShiftOutDR8;
    maxqd->setSystemProgrammingBits = setSystemProgrammingBits;
    maxqd->setTimeout = setTimeout;
}
