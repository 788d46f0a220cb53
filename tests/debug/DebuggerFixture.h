// The debugger over a program that is assembled and runs on the processor's core.
#pragma once

#include "debug/run/DebuggerBreakpoint.h"
#include "debug/symbols/SymbolicDebug.h"
#include "maxq30/cpu/MAXQ30Debugger.h"
#include "support/Path.h"
#include "target/FakeTarget.h"
#include "target/io/TargetIOServer.h"
#include "tests/debug/CoreMonitor.h"
#include "tests/tools/kvas/Sources.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Link.h"
#include "zoff/ZOFFDebugIndex.h"

#include <optional>

class Debugger : public Sources,
                 private TargetIOServerTerminalInterface,
                 private TargetIOServerHelperFunctions {
protected:
    Debugger()
    {
        ZOFFDebugIndex::install(SymbolicDebugIndex);
        subject.setTargetInterface(&target);
        subject.setTargetIOServer(&m_server);
    }
    ~Debugger() override { subject.unloadSymbols(Path()); }

    // Assembles a program with the examples' startup, or without it, and puts it into the target.
    void program(const std::string& text, bool startup = true)
    {
        std::string library = QBURN_SOURCE_DIR "/examples/lib";
        job.directories = {library};
        job.sources.clear();
        if (startup)
            job.sources.push_back(library + "/crt.s");
        source = dir.write("program.s", text);
        job.sources.push_back(source);
        kvas::Diagnostics diagnostics;
        bytes = kvas::link(job, diagnostics);
        ASSERT_EQ(diagnostics.text(), "");
        executable = dir.write("program.kvx", bytes);
        subject.loadSymbols(Path(executable), 0);
        for (ZOFFSection* s : subject.tables().at(0)->module()->sections()) {
            s->computeSectionMetrics();
            if (!s->goesIntoLoadFile() || s->lowestAddress() == ZOFFSection::UnknownAddress)
                continue;
            std::vector<uint8_t> image(size_t(s->getSize()));
            s->dump(image.size(), image.data());
            target.core.writeCode(s->lowestAddress(), uint32_t(image.size()), image.data());
        }
    }
    // Polls until the program stops or ends; answers the line where it stands, 0 for an end.
    int wait()
    {
        for (int i = 0; i < 10000 && !status; ++i)
            if (subject.isStopped())
                return line(0);
        return status ? 0 : -1;
    }
    int line(unsigned frame)
    {
        QString name, function;
        Path path;
        int number = 0;
        uint32_t address = 0;
        subject.locate(subject.getFrame(frame), name, path, function, number, address);
        return number;
    }
    std::string function(unsigned frame)
    {
        QString name, text;
        Path path;
        int number = 0;
        uint32_t address = 0;
        subject.locate(subject.getFrame(frame), name, path, text, number, address);
        return text.toStdString();
    }
    int64_t address(const char* symbol) const
    {
        int64_t value = 0;
        EXPECT_TRUE(subject.getLinkerSymbolValue(symbol, value)) << symbol;
        return value;
    }
    DebuggerBreakpoint* breakAt(int number, int count = 0, bool temporary = false)
    {
        return subject.setBreakpoint(QString(), Path(source), number, count, true, temporary, QString(),
                                     QString());
    }

    void addOutput(const QString& text) override { output += text.toStdString(); }
    QString getInputLine() override { return {}; }
    int inputLines() const override { return 0; }
    QChar getInputChar() override { return {}; }
    bool inputCharAvailable() const override { return false; }
    void errorOccurred(const char*) override {}
    void debugBreakOccurred() override {}
    void inputRequested() override {}
    void outputUpdated() override {}
    void exitOccurred(int value) override
    {
        status = value;
        subject.clear();
    }
    void loadSymbols(const char*, unsigned) override {}

    FakeHelpers helpers;
    CoreMonitor target{&helpers};
    DebuggerHost host;
    MAXQ30Debugger subject{&host};
    std::string source, executable, output;
    std::optional<int> status;

private:
    TargetIOServer m_server{this, this};
};

// A loop of three calls.
inline constexpr char Loop[] = ".LIBRARY console\n"    // 1
                               ".PUBLIC main, twice\n" // 2
                               ".CODE\n"               // 3
                               ".FUNC main\n"          // 4
                               " PUSH A[6]\n"          // 5
                               ".ADJUST -4\n"          // 6
                               " MOVE A[6], #3\n"      // 7
                               ".again: CALL twice\n"  // 8
                               " MOVE A[0], A[6]\n"    // 9
                               " SUB #1\n"             // 10
                               " MOVE A[6], A[0]\n"    // 11
                               " JUMP NZ, .again\n"    // 12
                               " MOVE A[0], #7\n"      // 13
                               " POP A[6]\n"           // 14
                               ".ADJUST 0\n"           // 15
                               " RET\n"                // 16
                               ".ENDFUNC\n"            // 17
                               ".FUNC twice\n"         // 18
                               " ADD A[0]\n"           // 19
                               " RET\n"                // 20
                               ".ENDFUNC\n";
