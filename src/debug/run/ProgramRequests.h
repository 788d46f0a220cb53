// The service of a program's requests: two words of its data memory, one that says what it wants and one
// that holds the argument and the answer. A program without the two words runs unserved.
#pragma once

#include "debug/monitor/HMonitor.h"
#include "target/TargetInterface.h"

#include <cstdint>

class DebuggerHelperFunctions;
class DebugProcessor;
class HException;
class SymbolTables;
class TargetIOServer;

class ProgramRequests : private ControlWordWatcher {
public:
    // The program has ended; its request is not answered.
    static constexpr int ExitOperation = 0x2E;

    ProgramRequests(DebuggerHelperFunctions* helper, DebugProcessor& processor, const SymbolTables& tables)
        : m_helper(helper), m_processor(processor), m_tables(tables)
    {
    }
    ~ProgramRequests();

    // The monitor is the target seen as one, null when it is none. Service ends, without a word to the
    // program.
    void setTarget(TargetInterface* target, HMonitor* monitor);
    void setServer(TargetIOServer* server) { m_server = server; }

    // Finds the two words and begins to serve. Throws what the link throws; the next call tries again.
    void enable();
    // Tells the program that nobody serves it any more. Does nothing while service is off.
    void disable();
    // Ends the service here only.
    void withdraw();
    bool enabled() const { return m_enabled; }

    // Carries out the request that the program has made; false when there is none, or one is being carried
    // out already. A request that cannot be carried out is displayed, and gets an error for an answer.
    bool poll(int& operation);
    bool serving() const { return m_serving; }

    // A link that fails is told of once, and once more when it is back.
    void noteLink(const HException* failure);

private:
    void controlWordWritten() override;
    int controlWord() const;
    void serve(int operation);
    void carryOut(int operation);

    DebuggerHelperFunctions* m_helper;
    DebugProcessor& m_processor;
    const SymbolTables& m_tables;
    TargetInterface* m_target = nullptr;
    HMonitor* m_monitor = nullptr;
    TargetIOServer* m_server = nullptr;
    bool m_enabled = false;
    uint32_t m_commWord = 0; // both good while enabled
    uint32_t m_controlWord = 0;
    bool m_serving = false;    // while a request is looked for and carried out
    bool m_linkFailed = false; // at the last poll
};
