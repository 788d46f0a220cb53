#include "target/io/TargetIOServer.h"

#include "support/AddressRanges.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/wait.h>

namespace {

constexpr unsigned StringPiece = 16; // strings are short, and a link is slow
constexpr unsigned LastOperation = 120;

} // namespace

// The operations by code. Those of the format families are in Families.
struct TargetIOServer::Operation {
    unsigned code;
    Handler handler;
};

const TargetIOServer::Operation TargetIOServer::Operations[] = {
    {1, &TargetIOServer::onError},
    {2, &TargetIOServer::onError},
    {3, &TargetIOServer::onError},
    {4, &TargetIOServer::onError},
    {5, &TargetIOServer::errorText},
    {6, &TargetIOServer::fileOpen},
    {7, &TargetIOServer::fileFlush},
    {8, &TargetIOServer::fileClose},
    {17, &TargetIOServer::fileGetc},
    {18, &TargetIOServer::fileGets},
    {19, &TargetIOServer::filePutc},
    {20, &TargetIOServer::filePuts},
    {21, &TargetIOServer::getchar_},
    {22, &TargetIOServer::gets_},
    {23, &TargetIOServer::putchar_},
    {24, &TargetIOServer::puts_},
    {25, &TargetIOServer::getWord},
    {26, &TargetIOServer::getUnsignedWord},
    {27, &TargetIOServer::getLong},
    {28, &TargetIOServer::getUnsignedLong},
    {29, &TargetIOServer::getFloat},
    {30, &TargetIOServer::getDouble},
    {31, &TargetIOServer::getLongLong},
    {32, &TargetIOServer::getLongLong},
    {33, &TargetIOServer::fileRead},
    {34, &TargetIOServer::fileWrite},
    {35, &TargetIOServer::fileSeek},
    {36, &TargetIOServer::fileTell},
    {37, &TargetIOServer::fileRewind},
    {38, &TargetIOServer::fileLength},
    {39, &TargetIOServer::fileClearError},
    {40, &TargetIOServer::fileEnd},
    {41, &TargetIOServer::fileError},
    {42, &TargetIOServer::debugBreak},
    {43, &TargetIOServer::kbhit},
    {44, &TargetIOServer::getKey},
    {46, &TargetIOServer::exit_},
    {47, &TargetIOServer::time_},
    {48, &TargetIOServer::divide},
    {73, &TargetIOServer::fileUngetc},
    {74, &TargetIOServer::fileTell},
    {75, &TargetIOServer::fileSetPosition},
    {76, &TargetIOServer::fileReopen},
    {77, &TargetIOServer::perror_},
    {78, &TargetIOServer::removeFile},
    {79, &TargetIOServer::renameFile},
    {80, &TargetIOServer::temporaryFile},
    {81, &TargetIOServer::temporaryName},
    {82, &TargetIOServer::environmentVariable},
    {83, &TargetIOServer::systemCommand},
    {84, &TargetIOServer::arguments},
    {120, &TargetIOServer::symbols},
};

// The format families. Each has four codes: format in data memory with 8-byte doubles, with 4-byte
// floats, format in code memory with doubles, with floats.
struct TargetIOServer::Family {
    unsigned codes[4];
    bool scans;
    bool hasHandle; // the first word of the block
    bool hasList;   // the arguments lie at an address, instead of behind the format
};

const TargetIOServer::Family TargetIOServer::Families[] = {
    {{9, 11, 49, 51}, false, true, false}, {{10, 12, 50, 52}, false, false, false},
    {{13, 15, 53, 55}, true, true, false}, {{14, 16, 54, 56}, true, false, false},
    {{57, 59, 61, 63}, false, true, true}, {{58, 60, 62, 64}, false, false, true},
    {{65, 67, 69, 71}, true, true, true},  {{66, 68, 70, 72}, true, false, true},
};

TargetIOServer::TargetIOServer(TargetIOServerHelperFunctions* helpers,
                               TargetIOServerTerminalInterface* terminal)
    : m_helpers(helpers), m_terminal(terminal), m_listFunctions(makeListFunctions())
{
    assert(std::ranges::is_sorted(Operations, {}, &Operation::code));
}

TargetIOServer::~TargetIOServer()
{
    closeFiles();
}

void TargetIOServer::closeFiles()
{
    for (FILE*& open : openFiles)
        if (open) {
            fclose(open);
            open = nullptr;
        }
}

void TargetIOServer::init(const QStringList& args)
{
    closeFiles();
    m_args = args;
}

void TargetIOServer::handleOperation(TargetMemoryInterface* data, TargetMemoryInterface* code,
                                     unsigned operation, unsigned commAddress)
{
    if (operation > LastOperation)
        return;
    ++m_requests;
    m_data = data;
    m_code = code;
    m_operation = operation;
    m_comm = commAddress;
    m_listFunctions.intSize = data->wordLength();
    auto known = std::ranges::lower_bound(Operations, operation, {}, &Operation::code);
    if (known != std::end(Operations) && known->code == operation) {
        (this->*known->handler)();
        return;
    }
    for (const Family& family : Families)
        for (unsigned form = 0; form < 4; ++form)
            if (family.codes[form] == operation) {
                handleFormat(family, form & 1, form & 2);
                return;
            }
}

// --- Words, strings and results in target memory ----------------------------------------------

int64_t TargetIOServer::argument()
{
    argAddress = m_comm;
    return nextWord();
}

void TargetIOServer::beginBlock()
{
    argAddress = uint32_t(argument());
}

// `size` bytes at the cursor, sign-extended.
int64_t TargetIOServer::nextNumber(unsigned size)
{
    uint64_t value = m_data->peekNumber(argAddress, size);
    argAddress += size;
    unsigned shift = 64 - 8 * size;
    return int64_t(value << shift) >> shift;
}

int64_t TargetIOServer::nextWord()
{
    return nextNumber(m_data->wordLength());
}

void TargetIOServer::result(int64_t value)
{
    m_data->pokeWord(m_comm, uint64_t(value));
}

std::string TargetIOServer::dumpString(uint32_t address, bool fromCode)
{
    TargetMemoryInterface* memory = fromCode ? m_code : m_data;
    std::string text;
    while (text.size() < MaxString) {
        // A string may end right where its memory does: no piece reaches beyond.
        unsigned count = std::min(StringPiece, MaxString - unsigned(text.size()));
        if (const AddressRange* range = memory->addressRanges().find(address))
            count = unsigned(std::min<uint64_t>(count, uint64_t(range->high) - address + 1));
        unsigned char piece[StringPiece];
        memory->peekBytes(address, count, piece);
        const void* zero = memchr(piece, 0, count);
        text.append(reinterpret_cast<const char*>(piece),
                    zero ? size_t(static_cast<const unsigned char*>(zero) - piece) : count);
        if (zero)
            return text;
        address += count;
    }
    text.resize(MaxString - 1);
    return text;
}

std::string TargetIOServer::nextString()
{
    return dumpString(uint32_t(nextWord()), false);
}

// A transfer that is no larger than one may be, before memory is taken for it. What is not is an error of
// the target's.
bool TargetIOServer::addressable(uint32_t address, uint64_t size)
{
    bool possible = size <= MaxTransfer && uint64_t(address) + size <= uint64_t(1) << 32;
    if (!possible)
        lastErrno = EFAULT;
    return possible;
}

// A place that is written to, for which the memory must exist.
bool TargetIOServer::transferable(uint32_t address, uint64_t size)
{
    if (!addressable(address, size))
        return false;
    bool exists =
        m_data->addressRanges().isEmpty() || size == 0 || m_data->memoryExists(address, unsigned(size));
    if (!exists)
        lastErrno = EFAULT;
    return exists;
}

// --- The argument functions of the format engine ----------------------------------------------

va_listfns TargetIOServer::makeListFunctions()
{
    struct Access {
        static TargetIOServer& server(void* data) { return *static_cast<TargetIOServer*>(data); }
        static int64_t getInt(void* d) { return server(d).nextWord(); }
        static int64_t getLong(void* d) { return server(d).nextNumber(4); }
        static int64_t getLongLong(void* d) { return server(d).nextNumber(8); }
        static double getDouble(void* d)
        {
            int64_t bits = server(d).nextNumber(8);
            double value;
            memcpy(&value, &bits, sizeof value);
            return value;
        }
        static uint32_t getPtr(void* d) { return uint32_t(server(d).nextWord()); }
        static std::string getString(void* d) { return server(d).nextString(); }
        static void setWord(void* d, int64_t value)
        {
            TargetIOServer& s = server(d);
            s.m_data->pokeWord(s.argAddress, uint64_t(value));
            s.argAddress += s.m_data->wordLength();
        }
        static void write(void* d, uint32_t address, unsigned size, uint64_t value)
        {
            server(d).m_data->pokeNumber(address, size, value);
        }
    };
    va_listfns f;
    f.getIntArg = Access::getInt;
    f.getLongArg = Access::getLong;
    f.getLongLongArg = Access::getLongLong;
    f.getDoubleArg = Access::getDouble;
    f.getPtrArg = Access::getPtr;
    f.getStringArg = Access::getString;
    f.setLongPtrArg = Access::setWord;
    f.setIntPtrArg = Access::setWord;
    f.writePtrArgChar = [](void* d, uint32_t a, int64_t v) { Access::write(d, a, 1, uint64_t(v)); };
    f.writePtrArgShort = [](void* d, uint32_t a, int64_t v) { Access::write(d, a, 2, uint64_t(v)); };
    f.writePtrArgInt = [](void* d, uint32_t a, int64_t v) {
        Access::write(d, a, Access::server(d).m_data->wordLength(), uint64_t(v));
    };
    f.writePtrArgLong = [](void* d, uint32_t a, int64_t v) { Access::write(d, a, 4, uint64_t(v)); };
    f.writePtrArgLongLong = [](void* d, uint32_t a, int64_t v) { Access::write(d, a, 8, uint64_t(v)); };
    f.writePtrArgUnsignedChar = [](void* d, uint32_t a, uint64_t v) { Access::write(d, a, 1, v); };
    f.writePtrArgUnsignedShort = [](void* d, uint32_t a, uint64_t v) { Access::write(d, a, 2, v); };
    f.writePtrArgUnsignedInt = [](void* d, uint32_t a, uint64_t v) {
        Access::write(d, a, Access::server(d).m_data->wordLength(), v);
    };
    f.writePtrArgUnsignedLong = [](void* d, uint32_t a, uint64_t v) { Access::write(d, a, 4, v); };
    f.writePtrArgUnsignedLongLong = [](void* d, uint32_t a, uint64_t v) { Access::write(d, a, 8, v); };
    f.writePtrArgFloat = [](void* d, uint32_t a, double v) {
        float single = float(v);
        uint32_t bits;
        memcpy(&bits, &single, sizeof bits);
        Access::write(d, a, 4, bits);
    };
    f.writePtrArgDouble = [](void* d, uint32_t a, double v) {
        uint64_t bits;
        memcpy(&bits, &v, sizeof bits);
        Access::write(d, a, 8, bits);
    };
    // No target of this kind has a long double of its own.
    f.writePtrArgLongDouble = [](void*, uint32_t, double) {};
    return f;
}

void TargetIOServer::handleFormat(const Family& family, bool floats, bool formatInCode)
{
    m_listFunctions.getDoubleArg = makeListFunctions().getDoubleArg;
    if (floats)
        m_listFunctions.getDoubleArg = [](void* d) -> double {
            uint32_t bits = uint32_t(static_cast<TargetIOServer*>(d)->nextNumber(4));
            float value;
            memcpy(&value, &bits, sizeof value);
            return value;
        };
    beginBlock();
    int64_t handle = family.hasHandle ? nextWord() : family.scans ? 0 : 1;
    std::string format = dumpString(uint32_t(nextWord()), formatInCode);
    if (family.hasList)
        argAddress = uint32_t(nextWord());
    bool console = family.scans ? handle == 0 : handle == 1 || handle == 2;
    if (console) {
        if (family.scans)
            handleScanf(format);
        else
            handlePrintf(format);
        return;
    }
    FILE* open = file(handle);
    if (!open)
        return;
    if (family.scans)
        handleFileScanf(handle, open, format);
    else
        handleFilePrintf(open, format);
}

// --- Errors, exit, time, environment, arguments -----------------------------------------------

void TargetIOServer::onError()
{
    static const char* const texts[] = {"divide by zero", "stack overflow", "stack underflow",
                                        "assert() failed"};
    m_helpers->errorOccurred(texts[m_operation - 1]);
}

void TargetIOServer::errorText()
{
    m_helpers->errorOccurred(dumpString(uint32_t(argument()), false).c_str());
}

void TargetIOServer::debugBreak()
{
    m_helpers->debugBreakOccurred();
}

void TargetIOServer::exit_()
{
    m_helpers->exitOccurred(int(argument()));
}

void TargetIOServer::time_()
{
    m_data->pokeNumber(uint32_t(argument()), 4, uint64_t(time(nullptr)));
    result(0);
}

// Dividend, divisor and quotient follow each other, 8 bytes each.
void TargetIOServer::divide()
{
    beginBlock();
    int64_t dividend = nextNumber(8);
    int64_t divisor = nextNumber(8);
    bool undefined = divisor == 0 || (divisor == -1 && dividend == INT64_MIN);
    m_data->pokeNumber(argAddress, 8, uint64_t(undefined ? 0 : dividend / divisor));
    result(0);
}

void TargetIOServer::environmentVariable()
{
    beginBlock();
    std::string name = nextString();
    uint32_t buffer = uint32_t(nextWord());
    uint32_t size = uint32_t(nextWord());
    const char* value = getenv(name.c_str());
    size_t length = value ? strlen(value) + 1 : 0;
    if (!value || length > size) {
        result(-1);
        return;
    }
    m_data->pokeBytes(buffer, unsigned(length), reinterpret_cast<const unsigned char*>(value));
    result(0);
}

void TargetIOServer::systemCommand()
{
    beginBlock();
    std::string command = nextString();
    // This process ignores a closed pipe, which a command would take over.
    struct sigaction earlier, usual = {};
    usual.sa_handler = SIG_DFL;
    sigaction(SIGPIPE, &usual, &earlier);
    errno = 0;
    int status = system(command.c_str());
    lastErrno = errno;
    sigaction(SIGPIPE, &earlier, nullptr);
    // While a command runs Ctrl-C reaches it alone, but the user means the whole run.
    if (status != -1 && WIFSIGNALED(status) && WTERMSIG(status) == SIGINT)
        raise(SIGINT);
    result(status);
}

// One word for each pointer and one for the closing null; the strings follow.
void TargetIOServer::arguments()
{
    beginBlock();
    uint32_t buffer = uint32_t(nextWord());
    uint64_t room = uint32_t(nextWord());
    unsigned word = m_data->wordLength();
    uint64_t used = word;
    std::vector<QByteArray> fitting;
    for (const QString& arg : std::as_const(m_args)) {
        QByteArray text = arg.toLocal8Bit();
        uint64_t needed = word + uint64_t(text.size()) + 1;
        if (used + needed > room)
            break;
        used += needed;
        fitting.push_back(text);
    }
    if (word > room) {
        result(0);
        return;
    }
    uint32_t pointer = buffer;
    uint32_t string = buffer + word * uint32_t(fitting.size() + 1);
    for (const QByteArray& text : fitting) {
        m_data->pokeWord(pointer, string);
        m_data->pokeBytes(string, unsigned(text.size()) + 1,
                          reinterpret_cast<const unsigned char*>(text.constData()));
        pointer += word;
        string += uint32_t(text.size()) + 1;
    }
    m_data->pokeWord(pointer, 0);
    result(int64_t(fitting.size()));
}

void TargetIOServer::symbols()
{
    beginBlock();
    std::string name = nextString();
    m_helpers->loadSymbols(name.c_str(), unsigned(nextWord()));
    result(0);
}
