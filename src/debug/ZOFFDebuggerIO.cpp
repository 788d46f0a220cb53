// The service of a program's requests: two words of its data memory, one that says what it wants and one
// that holds the argument and the answer.

#include "debug/DebuggerHelperFunctions.h"
#include "debug/ZOFFDebugger.h"
#include "support/HException.h"
#include "target/io/TargetIOServer.h"
#include "target/memory/TargetMemoryInterface.h"

namespace {

constexpr char ControlWord[] = "_dbgCntrlWord";
constexpr char CommWord[] = "_dbgCommWord";
constexpr int ExitOperation = 0x2E;
constexpr int Withdrawn = -1;
constexpr uint64_t RefusedAnswer = ~uint64_t(0);

struct Flag {
    explicit Flag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Flag() { m_flag = false; }
    bool& m_flag;
};

} // namespace

void ZOFFDebugger::enableDebugIO()
{
    if (m_ioEnabled)
        return;
    int64_t control = 0, comm = 0;
    if (!getLinkerSymbolValue(ControlWord, control) || !getLinkerSymbolValue(CommWord, comm))
        return;
    TargetMemoryInterface* data = checkedTarget().dataMemory();
    if (!data)
        return;
    m_controlWord = uint32_t(control);
    m_commWord = uint32_t(comm);
    m_linkFailed = false;
    data->pokeWord(m_controlWord, 0);
    data->pokeWord(m_commWord, 0);
    m_ioEnabled = true; // not before: what failed is tried again with the next go()
    initialiseDebugOperation(m_controlWord);
    if (m_monitor)
        m_monitor->watchControlWord(m_controlWord, this);
}

void ZOFFDebugger::withdraw()
{
    m_ioEnabled = false;
    if (m_monitor)
        m_monitor->watchControlWord(0, nullptr);
}

void ZOFFDebugger::disableDebugIO()
{
    if (!m_ioEnabled)
        return;
    withdraw();
    if (TargetMemoryInterface* data = checkedTarget().dataMemory())
        data->pokeWord(m_controlWord, ~uint64_t(0));
}

// The control word counts with its low 16 bits, as a signed number.
int ZOFFDebugger::controlWord()
{
    return int16_t(checkedTarget().dataMemory()->peekWord(m_controlWord));
}

bool ZOFFDebugger::handleDebugIO(int& operation)
{
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
void ZOFFDebugger::serve(int operation)
{
    TargetMemoryInterface* data = checkedTarget().dataMemory();
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

void ZOFFDebugger::carryOut(int operation)
{
    if (m_server)
        m_server->handleOperation(m_target->dataMemory(), m_target->codeMemory(), unsigned(operation),
                                  m_commWord);
}

// A link that fails is told of once, and once more when it is back.
void ZOFFDebugger::noteLink(const HException* failure)
{
    if (failure && !m_linkFailed)
        m_helper->displayError(failure->text());
    else if (!failure && m_linkFailed)
        m_helper->displayError(QStringLiteral("the target answers again"));
    m_linkFailed = failure != nullptr;
}

// The same, but not from within a request: its file or console may take long, and a target may handle
// events while it is being read.
bool ZOFFDebugger::pollRequest(int& operation)
{
    if (!m_ioEnabled || m_serving)
        return false;
    Flag serving(m_serving);
    return handleDebugIO(operation);
}

// From the monitor's run, between two instructions.
void ZOFFDebugger::controlWordWritten()
{
    try {
        int operation = 0;
        pollRequest(operation);
    } catch (const HException& failure) {
        noteLink(&failure);
    }
}

bool ZOFFDebugger::isStopped()
{
    if (m_serving || !m_monitor)
        return m_stopped;
    try {
        int operation = 0;
        if (m_monitor->isStopped()) {
            if (pollRequest(operation) && !m_stopped) {
                if (operation == ExitOperation)
                    return m_stopped;
                go();
            }
            if (!m_stopped && m_monitor->isStopped())
                handleBreakpoint();
        } else if (!debugOperationUsesBreakpoint()) {
            pollRequest(operation);
        }
        noteLink(nullptr);
    } catch (const HException& failure) {
        noteLink(&failure);
    }
    return m_stopped;
}
