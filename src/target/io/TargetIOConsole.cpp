// The console operations of the target I/O server.

#include "support/Numbers.h"
#include "target/io/TargetIOServer.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

constexpr int64_t NoInput = -2; // the target asks again

} // namespace

void TargetIOServer::toConsole(const std::string& text)
{
    m_terminal->addOutput(QString::fromLatin1(text.data(), qsizetype(text.size())));
    m_helpers->outputUpdated();
}

bool TargetIOServer::readLine(std::string& line)
{
    if (m_terminal->inputLines() > 0) {
        line = m_terminal->getInputLine().toLatin1().toStdString();
        return true;
    }
    result(NoInput);
    m_helpers->inputRequested();
    return false;
}

// One request is one piece of output: at most what the buffer holds, though the count is the whole.
void TargetIOServer::handlePrintf(const std::string& format)
{
    __printf_tag consolePrintf;
    consolePrintf.limit = ConsoleBuffer;
    consolePrintf.buffer = iobuf;
    __vfprintf(&consolePrintf, format.c_str(), m_listFunctions, this);
    iobuf[std::min<unsigned>(unsigned(consolePrintf.count), ConsoleBuffer - 1)] = 0;
    toConsole(iobuf);
    result(consolePrintf.count);
}

void TargetIOServer::handleScanf(const std::string& format)
{
    std::string line;
    if (!readLine(line))
        return;
    __scanf_source consoleScanf;
    consoleScanf.string = line.c_str();
    errno = 0;
    int items = __vfscanf(&consoleScanf, format.c_str(), m_listFunctions, this);
    lastErrno = errno;
    result(items);
}

void TargetIOServer::handleGets(uint32_t buffer, uint32_t size)
{
    std::string line;
    if (!readLine(line))
        return;
    if (size > 0 && line.size() > size - 1)
        line.resize(size - 1);
    if (!transferable(buffer, line.size() + 1)) {
        result(-1);
        return;
    }
    m_data->pokeBytes(buffer, unsigned(line.size()) + 1,
                      reinterpret_cast<const unsigned char*>(line.c_str()));
    result(0);
}

void TargetIOServer::handleGetchar()
{
    QChar character = m_terminal->getInputChar();
    if (character.isNull()) {
        result(NoInput);
        m_helpers->inputRequested();
        return;
    }
    result(character.unicode() > 0xFF ? 0 : int8_t(character.unicode()));
}

void TargetIOServer::getchar_()
{
    if (m_terminal->inputLines() > 0) {
        handleGetchar();
        return;
    }
    result(NoInput);
    m_helpers->inputRequested();
}

void TargetIOServer::getKey()
{
    handleGetchar();
}

void TargetIOServer::kbhit()
{
    result(m_terminal->inputCharAvailable() ? 1 : 0);
}

void TargetIOServer::gets_()
{
    handleGets(uint32_t(argument()), 0);
}

void TargetIOServer::putchar_()
{
    char character = char(argument());
    if (character)
        toConsole(std::string(1, character));
    result(0);
}

void TargetIOServer::puts_()
{
    toConsole(dumpString(uint32_t(argument()), false) + "\n");
    result(0);
}

void TargetIOServer::perror_()
{
    beginBlock();
    toConsole(nextString() + ": " + strerror(lastErrno) + "\n");
    result(0);
}

// --- Numbers read from a line -----------------------------------------------------------------

void TargetIOServer::storeNumber(unsigned size, bool isSigned)
{
    uint32_t destination = uint32_t(argument());
    std::string line;
    if (!readLine(line))
        return;
    uint64_t value = isSigned ? uint64_t(fromStringToint64(line.c_str())) : fromStringTouint64(line.c_str());
    m_data->pokeNumber(destination, size, value);
    result(0);
}

void TargetIOServer::getWord()
{
    storeNumber(m_data->wordLength(), true);
}

void TargetIOServer::getUnsignedWord()
{
    storeNumber(m_data->wordLength(), false);
}

void TargetIOServer::getLong()
{
    storeNumber(4, true);
}

void TargetIOServer::getUnsignedLong()
{
    storeNumber(4, false);
}

void TargetIOServer::getLongLong()
{
    storeNumber(8, true);
}

void TargetIOServer::storeFloating(unsigned size)
{
    uint32_t destination = uint32_t(argument());
    std::string line;
    if (!readLine(line))
        return;
    QString text = QString::fromLatin1(line.data(), qsizetype(line.size())).trimmed();
    uint64_t bits = 0;
    if (size == 4) {
        float value = text.toFloat();
        memcpy(&bits, &value, sizeof value);
    } else {
        double value = text.toDouble();
        memcpy(&bits, &value, sizeof value);
    }
    m_data->pokeNumber(destination, size, bits);
    result(0);
}

void TargetIOServer::getFloat()
{
    storeFloating(4);
}

void TargetIOServer::getDouble()
{
    storeFloating(8);
}
