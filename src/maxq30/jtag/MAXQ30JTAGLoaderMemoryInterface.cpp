#include "maxq30/jtag/MAXQ30JTAGLoaderMemoryInterface.h"

#include "maxq30/jtag/JTAGFrames.h"
#include "maxq30/jtag/LinkTimeout.h"
#include "maxq30/jtag/MAXQ30JTAGMemoryInterface.h"
#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"
#include "maxq30/jtag/maxqd.h"
#include "support/Endian.h"
#include "support/HException.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstring>
#include <iterator>

using Family = MAXQ30BootloaderInformation::Family;

namespace {

constexpr unsigned CodeWordBytes = 2;
constexpr uint32_t LastAddress = 0xFFFFFF;
constexpr unsigned HeaderBytes = 6;
constexpr unsigned MaxData = 240; // bytes of one load command
constexpr unsigned char Erased = 0xFF;
constexpr qsizetype MaxDeviceId = 256;

// A bootloader that waits for a command answers a scan with both status bits and this byte.
constexpr unsigned char PromptStatus = 3;
constexpr unsigned char Prompt = '>';
constexpr unsigned long PromptTimeout = 2000; // milliseconds

constexpr const char* ErrorTexts[] = {
    "no error",          "family not supported",    "invalid command",
    "no password match", "bad parameter",           "verify failed",
    "unknown register",  "word mode not supported", "master erase failed",
    "page erase failed", "not implemented",         "timeout",
};

} // namespace

MAXQ30JTAGLoaderMemoryInterface::MAXQ30JTAGLoaderMemoryInterface(MAXQ30JTAGTargetInterface& target,
                                                                 MAXQ30JTAGCodeMemoryInterface& code)
    : TargetMemoryInterface(Endian::Little, CodeWordBytes, true), m_target(target), m_codeMemory(code)
{
    addressRanges().add(0, LastAddress, false);
    m_target.enterReset(maxqd::StartBootloader);
    _maxqd_t* maxqd = m_target.driver();
    maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
    maxqd->setNRST(maxqd, 1);
    m_target.awaitBootloader();
    getSupportedCommands();
    getDeviceId();
    getROMVersion();
    m_report.codeSize = askNumber(jtag::GetCodeSize);
    m_report.dataSize = askNumber(jtag::GetDataSize);
    // Each Fixed command then moves one whole slice of the page.
    if (m_report.supports(Family::FixedLoad) && !m_report.supports(Family::VariableLoad) && fixedLengthFits())
        m_pageSize = PageBytes - PageBytes % (CodeWordBytes * m_report.fixedCodeLength);
}

void MAXQ30JTAGLoaderMemoryInterface::ask(unsigned char command, unsigned char* answer, unsigned count)
{
    _maxqd_t* maxqd = m_target.driver();
    maxqd->loaderWrite(maxqd, &command, 1);
    maxqd->loaderRead(maxqd, answer, count);
}

unsigned MAXQ30JTAGLoaderMemoryInterface::askNumber(unsigned char command)
{
    unsigned char answer[2] = {};
    ask(command, answer, sizeof answer);
    return Endian::unpackUINT16(answer, 0, Endian::Little);
}

void MAXQ30JTAGLoaderMemoryInterface::getSupportedCommands()
{
    unsigned char answer[4] = {};
    ask(jtag::GetSupportedCommands, answer, sizeof answer);
    m_report.supportedCommands = Endian::unpackUINT16(answer, 0, Endian::Little);
    m_report.fixedCodeLength = answer[2];
    m_report.fixedDataLength = answer[3];
}

void MAXQ30JTAGLoaderMemoryInterface::getDeviceId()
{
    unsigned char byte = 0;
    ask(jtag::GetDeviceId, &byte, 1);
    while (byte != 0) {
        m_deviceId += QLatin1Char(char(byte));
        if (m_deviceId.size() >= MaxDeviceId)
            throw HException(
                QStringLiteral("The bootloader's device id does not end within %1 bytes").arg(MaxDeviceId));
        _maxqd_t* maxqd = m_target.driver();
        byte = 0;
        maxqd->loaderRead(maxqd, &byte, 1);
    }
}

void MAXQ30JTAGLoaderMemoryInterface::getROMVersion()
{
    unsigned char answer[2] = {};
    ask(jtag::GetROMVersion, answer, sizeof answer);
    m_report.romVersionMinor = answer[0];
    m_report.romVersionMajor = answer[1];
}

std::pair<unsigned char, unsigned char> MAXQ30JTAGLoaderMemoryInterface::getFlagsAndError()
{
    unsigned char answer[2] = {};
    ask(jtag::GetFlagsAndError, answer, sizeof answer);
    return {answer[0], answer[1]};
}

void MAXQ30JTAGLoaderMemoryInterface::command(const unsigned char* bytes, unsigned count)
{
    _maxqd_t* maxqd = m_target.driver();
    if (maxqd->loaderWrite(maxqd, bytes, count) || !m_inLoader)
        return;
    if (bytes[0] == jtag::LoadVariable || bytes[0] == jtag::LoadFixed)
        m_loadRefused = true;
    else
        warnOfRefusal(bytes[0] == jtag::MasterErase ? "an erase" : "a command");
}

// The error is that of the latest command. A bootloader that is busy has none to tell.
void MAXQ30JTAGLoaderMemoryInterface::warnOfRefusal(const char* what)
{
    _maxqd_t* maxqd = m_target.driver();
    const unsigned char question = jtag::GetFlagsAndError;
    unsigned char answer[2] = {};
    if (maxqd->loaderWrite(maxqd, &question, 1))
        maxqd->loaderRead(maxqd, answer, sizeof answer);
    const char* why = answer[1] ? getLoaderStatusString(answer[1]) : "it takes no more bytes";
    m_target.warn(
        QStringLiteral("the bootloader refuses %1: %2").arg(QLatin1String(what), QLatin1String(why)));
}

// A refused load is told here and once: asked between its pages, the question would take its turn in the
// bootloader's time.
void MAXQ30JTAGLoaderMemoryInterface::finish()
{
    flush();
    if (std::exchange(m_loadRefused, false))
        warnOfRefusal("a load");
}

const char* MAXQ30JTAGLoaderMemoryInterface::getLoaderStatusString(unsigned char error)
{
    return error < std::size(ErrorTexts) ? ErrorTexts[error] : "unknown error";
}

void MAXQ30JTAGLoaderMemoryInterface::pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    uint32_t offset = address % m_pageSize;
    uint32_t base = address - offset;
    while (count > 0) {
        if (base != m_pageBase) {
            flush();
            memset(m_page, Erased, sizeof m_page);
            m_pageBase = base;
        }
        unsigned piece = std::min(count, m_pageSize - offset);
        memcpy(m_page + offset, bytes, piece);
        bytes += piece;
        count -= piece;
        offset = 0;
        base += m_pageSize;
    }
}

// A page that could not be sent is not sent again.
void MAXQ30JTAGLoaderMemoryInterface::flush()
{
    uint32_t base = std::exchange(m_pageBase, NoPage);
    if (base != NoPage)
        alignedPokeBytes(base, m_pageSize, m_page);
}

bool MAXQ30JTAGLoaderMemoryInterface::fixedLengthFits() const
{
    return m_report.fixedCodeLength > 0 && m_report.fixedCodeLength <= MaxData / CodeWordBytes;
}

void MAXQ30JTAGLoaderMemoryInterface::alignedPokeBytes(unsigned int address, unsigned int length,
                                                       const unsigned char* data)
{
    if (m_report.supports(Family::VariableLoad))
        pokeVariable(address, length, data);
    else if (m_report.supports(Family::FixedLoad) && fixedLengthFits())
        pokeFixed(address, length, data);
    else
        throw HException("fixed or variable length load not supported");
}

void MAXQ30JTAGLoaderMemoryInterface::pokeVariable(uint32_t address, unsigned length,
                                                   const unsigned char* data)
{
    while (length > 0) {
        unsigned piece = std::min(length, MaxData);
        unsigned char frame[HeaderBytes + MaxData] = {jtag::LoadVariable};
        Endian::packUINT16(frame, 1, uint16_t(piece), Endian::Little);
        Endian::packNumber(frame, 3, address, 3, Endian::Little);
        memcpy(frame + HeaderBytes, data, piece);
        command(frame, HeaderBytes + piece);
        address += piece;
        data += piece;
        length -= piece;
    }
}

void MAXQ30JTAGLoaderMemoryInterface::pokeFixed(uint32_t address, unsigned length, const unsigned char* data)
{
    awaitPrompt();
    uint32_t wordAddress = address >> 1;
    const unsigned slice = CodeWordBytes * m_report.fixedCodeLength;
    while (length > 0) {
        unsigned piece = std::min(length, slice);
        unsigned char frame[HeaderBytes + MaxData] = {
            jtag::LoadFixed, static_cast<unsigned char>(m_report.fixedCodeLength), 0};
        Endian::packNumber(frame, 3, wordAddress, 3, Endian::Little);
        memset(frame + HeaderBytes, Erased, slice);
        memcpy(frame + HeaderBytes, data, piece);
        command(frame, HeaderBytes + slice);
        wordAddress += m_report.fixedCodeLength;
        data += piece;
        length -= piece;
    }
}

void MAXQ30JTAGLoaderMemoryInterface::awaitPrompt()
{
    _maxqd_t* maxqd = m_target.driver();
    LinkTimeout timeout(maxqd, PromptTimeout);
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        unsigned char status = 0;
        unsigned char byte = maxqd->shiftInOutDR(maxqd, 0, &status);
        if (status == PromptStatus && byte == Prompt)
            return;
        if (timer.elapsed() > qint64(PromptTimeout))
            throw HException("No loader prompt");
    }
}

// The CPU stops as it leaves reset, for the debug engine to read its memory.
void MAXQ30JTAGLoaderMemoryInterface::leaveBootloader()
{
    finish();
    m_target.enterReset(maxqd::StartProgram);
    _maxqd_t* maxqd = m_target.driver();
    maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
    m_target.writeDebugRegister8(MAXQ30JTAGTargetInterface::DebugControl,
                                 MAXQ30JTAGTargetInterface::EnableDebugEngine);
    MAXQD_shiftInDR8(maxqd, jtag::StopCPU);
    maxqd->setNRST(maxqd, 1);
    m_inLoader = false;
}

void MAXQ30JTAGLoaderMemoryInterface::peekBytes(uint32_t address, unsigned count, unsigned char* bytes)
{
    if (m_inLoader)
        leaveBootloader();
    m_codeMemory.peekBytes(address, count, bytes);
}

void MAXQ30JTAGLoaderMemoryInterface::eraseAll()
{
    m_target.executeEraseScript();
}
