#include "driver/session/StopNotice.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/session/Loader.h"
#include "driver/session/SessionFace.h"
#include "support/Path.h"

void StopNotice::onBreakpoint()
{
    SymbolicDebuggerInterface& debugger = m_run.debugger();
    if (debugger.numcalls() == 0)
        return;
    QString name, function;
    Path path;
    int line = 0;
    uint32_t address = 0;
    debugger.locate(debugger.getFrame(0), name, path, function, line, address);
    QString where = QLatin1String("0x") + debugger.formatPC(address);
    if (!function.isEmpty())
        where += QLatin1String(" in ") + function;
    if (line > 0)
        where += QStringLiteral(" (%1:%2)").arg(path.fileName(), QString::number(line));
    m_run.loader().face().warning(QLatin1String("the program has stopped at ") + where);
}
