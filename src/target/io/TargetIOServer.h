// The host side of a target program's I/O: console text, host files, time, environment and arguments.
// A request is an operation code and a communication word in target data memory; the debugger finds
// and polls them and hands each request to handleOperation(). Results go back into the communication
// word.
//
// The target is not trusted: handles, sizes and addresses are checked, a transfer is at most
// MaxTransfer bytes, and what cannot be done is an error result. Only a memory access that fails
// throws, as HException.
//
// The operations of files are in TargetIOFiles.cpp, those of the console in TargetIOConsole.cpp, the
// format engine in TargetFormat.h.
#pragma once

#include "target/io/TargetFormat.h"

#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class TargetMemoryInterface;

// The console. Characters are bytes: each QChar holds one, as Latin-1, so that a program's own
// encoding passes through.
class TargetIOServerTerminalInterface {
public:
    virtual ~TargetIOServerTerminalInterface() = default;
    virtual void addOutput(const QString& text) = 0;
    virtual QString getInputLine() = 0; // the first completed line, null when there is none
    virtual int inputLines() const = 0; // completed lines
    virtual QChar getInputChar() = 0;   // null when there is none
    virtual bool inputCharAvailable() const = 0;
};

// Events that a request causes.
class TargetIOServerHelperFunctions {
public:
    virtual ~TargetIOServerHelperFunctions() = default;
    virtual void errorOccurred(const char* text) = 0;
    virtual void debugBreakOccurred() = 0;
    virtual void inputRequested() = 0; // a read found nothing
    virtual void outputUpdated() = 0;
    virtual void exitOccurred(int status) = 0;
    virtual void loadSymbols(const char* name, unsigned address) = 0;
};

class TargetIOServer {
public:
    static constexpr int MaxFiles = 200; // target handles; 0 to 2 are the console
    static constexpr unsigned ConsoleBuffer = 1024;
    static constexpr unsigned MaxString = 1024;               // bytes of a target string, its zero included
    static constexpr uint64_t MaxTransfer = 64 * 1024 * 1024; // bytes of one read or write
    static constexpr unsigned MaxPushedBack = 4096;           // characters of one file; each takes memory

    // Neither is owned; both may be one object.
    TargetIOServer(TargetIOServerHelperFunctions* helpers, TargetIOServerTerminalInterface* terminal);
    ~TargetIOServer();
    TargetIOServer(const TargetIOServer&) = delete;
    TargetIOServer& operator=(const TargetIOServer&) = delete;

    // Before a run: closes what is open and keeps the arguments for the program.
    void init(const QStringList& args);

    // Carries out one request; an unknown operation does nothing. commAddress is that of the
    // communication word.
    void handleOperation(TargetMemoryInterface* data, TargetMemoryInterface* code, unsigned operation,
                         unsigned commAddress);

    // Requests so far, for whoever paces the polls.
    uint64_t requests() const { return m_requests; }

private:
    struct Operation;
    struct Family;
    static const Operation Operations[];
    static const Family Families[];
    using Handler = void (TargetIOServer::*)();

    // What the operations share.
    int64_t argument(); // the communication word itself
    void beginBlock();  // the communication word as the address of the argument block
    int64_t nextWord();
    int64_t nextNumber(unsigned size);
    void result(int64_t value);
    std::string dumpString(uint32_t address, bool fromCode);
    std::string nextString();
    bool addressable(uint32_t address, uint64_t size);
    bool transferable(uint32_t address, uint64_t size);
    FILE* file(int64_t handle); // null and EBADF when the handle is bad
    int freeHandle();
    void enterFile(int handle, FILE* opened);
    void noteRead(int64_t handle);
    void toConsole(const std::string& text);
    bool readLine(std::string& line); // false, with the told result, when there is none
    void handleFormat(const Family& family, bool floats, bool formatInCode);
    void handlePrintf(const std::string& format);
    void handleScanf(const std::string& format);
    void handleFilePrintf(FILE* file, const std::string& format);
    void handleFileScanf(int64_t handle, FILE* file, const std::string& format);
    void handleGets(uint32_t buffer, uint32_t size);
    void handleGetchar();
    void storeNumber(unsigned size, bool isSigned);
    void storeFloating(unsigned size);
    void closeFiles();
    static va_listfns makeListFunctions();

    void onError();
    void errorText();
    void fileOpen();
    void fileFlush();
    void fileClose();
    void fileGetc();
    void fileGets();
    void filePutc();
    void filePuts();
    void getchar_();
    void gets_();
    void putchar_();
    void puts_();
    void getWord();
    void getUnsignedWord();
    void getLong();
    void getUnsignedLong();
    void getFloat();
    void getDouble();
    void getLongLong();
    void fileRead();
    void fileWrite();
    void fileSeek();
    void fileTell();
    void fileRewind();
    void fileLength();
    void fileClearError();
    void fileEnd();
    void fileError();
    void debugBreak();
    void kbhit();
    void getKey();
    void exit_();
    void time_();
    void divide();
    void fileUngetc();
    void fileSetPosition();
    void fileReopen();
    void perror_();
    void removeFile();
    void renameFile();
    void temporaryFile();
    void temporaryName();
    void environmentVariable();
    void systemCommand();
    void arguments();
    void symbols();

    TargetIOServerHelperFunctions* m_helpers;
    TargetIOServerTerminalInterface* m_terminal;
    TargetMemoryInterface* m_data = nullptr; // for the length of an operation, like m_code and m_comm
    TargetMemoryInterface* m_code = nullptr;
    unsigned m_operation = 0;
    uint64_t m_requests = 0;
    uint32_t m_comm = 0;
    std::array<FILE*, MaxFiles> openFiles{};       // by handle; 0 to 2 stay empty
    std::array<unsigned, MaxFiles> m_pushedBack{}; // by handle; at least as many as wait in the file
    int lastErrno = 0;
    uint32_t argAddress = 0; // read cursor in the argument block
    QStringList m_args;
    char iobuf[ConsoleBuffer];
    va_listfns m_listFunctions;
};
