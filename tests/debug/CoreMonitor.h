// A target like a board: the program runs while somebody looks, stops at breakpoints, and its link can
// fail. And the debugger's host.
#pragma once

#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/monitor/HBreakpoint.h"
#include "debug/monitor/HMonitor.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "sim/Core.h"
#include "support/Endian.h"
#include "support/HException.h"
#include "support/Path.h"
#include "target/TargetRegisterInterface.h"
#include "target/memory/TargetMemoryInterface.h"
#include "tests/target/FakeTarget.h"

#include <algorithm>
#include <map>

class CoreMemory : public TargetMemoryInterface {
public:
    CoreMemory(maxq30::Core& core, bool code)
        : TargetMemoryInterface(Endian::Little, code ? 2 : 4, false), m_core(core), m_code(code)
    {
        addressRanges().add(0, (code ? core.codeBytes() : core.dataBytes()) - 1, false);
    }
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override
    {
        check(m_code ? m_core.writeCode(address, count, bytes) : m_core.writeData(address, count, bytes));
    }
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override
    {
        ++reads;
        check(m_code ? m_core.readCode(address, count, bytes) : m_core.readData(address, count, bytes));
    }
    bool linkLost = false;
    int reads = 0;

private:
    void check(bool done) const
    {
        if (linkLost || !done)
            throw HException(linkLost ? "link lost" : "no memory there");
    }
    maxq30::Core& m_core;
    bool m_code;
};

class CoreRegisters : public MAXQ30Registers {
public:
    explicit CoreRegisters(maxq30::Core& core) : m_core(core) {}
    uint32_t getValue1(unsigned number) override
    {
        if (linkLost)
            throw HException("link lost");
        return m_core.readRegister(number) * (number == IP ? 2 : 1);
    }
    void setValue1(unsigned number, uint32_t value) override
    {
        m_core.writeRegister(number, number == IP ? value / 2 : value);
    }

    bool linkLost = false;

private:
    maxq30::Core& m_core;
};

class CoreMonitor : public HMonitor {
public:
    explicit CoreMonitor(FakeHelpers* helpers) : HMonitor(0, "Core", helpers) {}

    void connect(bool) override {}
    void disconnect() override {}
    bool isConnected() const override { return connected; }
    // Each look lets a running program go on for a while.
    bool isStopped() override
    {
        for (int i = 0; i < 1000 && !stopped; ++i) {
            execute();
            look();
        }
        return stopped;
    }
    TargetMemoryInterface* codeMemory() override { return &code; }
    TargetMemoryInterface* dataMemory() override { return &data; }
    TargetRegisterInterface* registers() override { return &file; }
    void reset(bool, bool) override { core.reset(); }
    void go() override
    {
        hit = nullptr;
        stopped = false;
        execute(); // away from a breakpoint here
        look();
    }
    void start(bool, unsigned) override {}
    void startDebugging(bool setPC, unsigned pc, bool stop) override
    {
        if (setPC)
            file.setPC(pc);
        hit = nullptr;
        stopped = stop;
    }
    void step() override
    {
        ++singleSteps;
        hit = nullptr;
        execute();
        stopped = true;
    }
    void stop() override { stopped = true; }
    void clear() override
    {
        breakpoints.clear();
        stopped = true;
    }
    bool setBreakpoint(HBreakpoint* breakpoint) override
    {
        if (breakpoints.size() >= capacity)
            return false;
        breakpoints.push_back(breakpoint);
        return true;
    }
    bool removeBreakpoint(HBreakpoint* breakpoint) override
    {
        if (hit == breakpoint)
            hit = nullptr;
        std::erase(breakpoints, breakpoint);
        return true;
    }
    HBreakpoint* matched() override { return hit; }
    bool canChain() override { return chains; }
    int numTriggers() override { return int(triggers.size()); }
    const char* getTrigger(int trigger) override { return triggers[size_t(trigger)]; }
    int getWriteTriggerNumber() override { return 2; }
    void iterateExecutionCount() override { m_nextCount = counts.begin(); }
    bool getNextExecutionCount(unsigned& at, unsigned& count, unsigned&) override
    {
        if (m_nextCount == counts.end())
            return false;
        at = m_nextCount->first;
        count = m_nextCount->second;
        ++m_nextCount;
        return true;
    }

    maxq30::Core core{256 * 1024, 64 * 1024};
    CoreMemory code{core, true};
    CoreMemory data{core, false};
    CoreRegisters file{core};
    std::vector<HBreakpoint*> breakpoints;
    size_t capacity = 8;
    bool chains = true;
    std::vector<const char*> triggers;
    std::map<unsigned, unsigned> counts; // of executions by address
    HBreakpoint* hit = nullptr;
    bool stopped = true;
    bool connected = true;
    int singleSteps = 0;

private:
    void execute()
    {
        ++counts[core.ip() * 2];
        core.step();
    }
    // Code only; the data that the program touches is nobody's business here.
    void look()
    {
        for (HBreakpoint* breakpoint : breakpoints)
            if (breakpoint->enabled && breakpoint->trigger == 0 && breakpoint->address == core.ip() * 2) {
                bool arms = false;
                for (HBreakpoint* other : breakpoints)
                    if (other->chainFrom == breakpoint)
                        other->enabled = arms = true;
                if (arms)
                    continue;
                hit = breakpoint;
                stopped = true;
            }
    }

    std::map<unsigned, unsigned>::const_iterator m_nextCount;
};

class DebuggerHost : public DebuggerHelperFunctions {
public:
    bool debuggerDisassemblyShowAddresses() override { return true; }
    bool debuggerDisassemblyShowLabels() override { return true; }
    bool debuggerDisassemblyShowSource() override { return true; }
    bool debuggerUseHardwareStep() override { return false; }
    void displayError(const QString& text) override { errors.append(text); }
    Path getDebugSourcePath(const Path& path) override { return path; }
    QString getDebugSourceText(const Path&, int line) override
    {
        return QStringLiteral("  line   %1 ").arg(line);
    }

    QStringList errors;
};
