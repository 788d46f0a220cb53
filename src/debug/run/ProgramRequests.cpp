#include "debug/run/ProgramRequests.h"

#include "debug/monitor/DebugProcessor.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/symbols/SymbolTables.h"
#include "support/HException.h"
#include "target/TargetInterface.h"
#include "target/io/TargetIOServer.h"
#include "target/memory/TargetMemoryInterface.h"

namespace {

constexpr char ControlWord[] = "_dbgCntrlWord";
constexpr char CommWord[] = "_dbgCommWord";
constexpr int Withdrawn = -1;
constexpr uint64_t RefusedAnswer = ~uint64_t(0);

struct Flag {
    explicit Flag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Flag() { m_flag = false; }
    bool& m_flag;
};

} // namespace

ProgramRequests::~ProgramRequests()
{
    if (m_enabled)
        withdraw();
}

void ProgramRequests::setTarget(TargetInterface* target, HMonitor* monitor)
{
    withdraw();
    m_target = target;
    m_monitor = monitor;
}

void ProgramRequests::enable()
{
    if (m_enabled || !m_target)
        return;
    int64_t control = 0, comm = 0;
    if (!m_tables.linkerSymbol(ControlWord, control) || !m_tables.linkerSymbol(CommWord, comm))
        return;
    TargetMemoryInterface* data = m_target->dataMemory();
    if (!data)
        return;
    m_controlWord = uint32_t(control);
    m_commWord = uint32_t(comm);
    m_linkFailed = false;
    data->pokeWord(m_controlWord, 0);
    data->pokeWord(m_commWord, 0);
    m_enabled = true; // not before: what failed is tried again with the next run
    m_processor.initialiseDebugOperation(m_controlWord);
    if (m_monitor)
        m_monitor->watchControlWord(m_controlWord, this);
}

void ProgramRequests::withdraw()
{
    m_enabled = false;
    if (m_monitor)
        m_monitor->watchControlWord(0, nullptr);
}

void ProgramRequests::disable()
{
    if (!m_enabled)
        return;
    withdraw();
    if (TargetMemoryInterface* data = m_target->dataMemory())
        data->pokeWord(m_controlWord, ~uint64_t(0));
}

// The control word counts with its low 16 bits, as a signed number.
int ProgramRequests::controlWord() const
{
    return int16_t(m_target->dataMemory()->peekWord(m_controlWord));
}

// Not from within a request: its file or console may take long, and a target may handle events while it is
// being read.
bool ProgramRequests::poll(int& operation)
{
    if (!m_enabled || m_serving)
        return false;
    Flag serving(m_serving);
    operation = controlWord();
    if (operation == Withdrawn) {
        withdraw();
        return false;
    }
    if (operation == 0)
        return false;
    serve(operation);
    return true;
}

// A request can fail because the link does, or because it asks for what is not there. The control word
// tells: while it can be read, the request gets an error for an answer, since what it has done here already
// must not be done twice; else the next poll sees it again.
void ProgramRequests::serve(int operation)
{
    TargetMemoryInterface* data = m_target->dataMemory();
    try {
        carryOut(operation);
    } catch (const HException& failure) {
        if (controlWord() == operation) {
            data->pokeWord(m_commWord, RefusedAnswer);
            m_helper->displayError(QStringLiteral("request %1 of the program failed: ").arg(operation) +
                                   failure.text());
        }
    }
    if (operation != ExitOperation)
        data->pokeWord(m_controlWord, 0);
}

void ProgramRequests::carryOut(int operation)
{
    if (m_server)
        m_server->handleOperation(m_target->dataMemory(), m_target->codeMemory(), unsigned(operation),
                                  m_commWord);
}

void ProgramRequests::noteLink(const HException* failure)
{
    if (failure && !m_linkFailed)
        m_helper->displayError(failure->text());
    else if (!failure && m_linkFailed)
        m_helper->displayError(QStringLiteral("the target answers again"));
    m_linkFailed = failure != nullptr;
}

// From the monitor's run, between two instructions.
void ProgramRequests::controlWordWritten()
{
    try {
        int operation = 0;
        poll(operation);
    } catch (const HException& failure) {
        noteLink(&failure);
    }
}
