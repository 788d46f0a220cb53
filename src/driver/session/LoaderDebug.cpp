// What the session does for the debugger: it looks at the running program, says what went wrong, and finds
// source text.

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/session/Loader.h"
#include "driver/terminal/TextProgressBar.h"
#include "support/HException.h"
#include "support/Path.h"
#include "support/Warning.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr int MaxWarnings = 100;
constexpr qint64 MaxSourceFile = 64 * 1024 * 1024; // bytes

} // namespace

void Loader::displayError(const QString& text)
{
    if (++m_warnings <= MaxWarnings)
        printWarning(text);
    if (m_warnings == MaxWarnings)
        printWarning(QStringLiteral("further warnings are not shown"));
}

void Loader::error(const QString& text)
{
    m_progressBar->clearLine();
    displayError(text);
}

void Loader::pollDebugger()
{
    try {
        if (debugger->isStopped() && !m_stopped)
            onBreakpoint();
    } catch (const HException& failure) {
        displayError(failure.text());
    }
}

void Loader::onBreakpoint()
{
    m_stopped = true;
    if (debugger->numcalls() == 0)
        return;
    QString name, function;
    Path path;
    int line = 0;
    uint32_t address = 0;
    debugger->locate(debugger->getFrame(0), name, path, function, line, address);
    QString where = QLatin1String("0x") + debugger->formatPC(address);
    if (!function.isEmpty())
        where += QLatin1String(" in ") + function;
    if (line > 0)
        where += QStringLiteral(" (%1:%2)").arg(path.fileName(), QString::number(line));
    printWarning(QLatin1String("the program has stopped at ") + where);
}

Path Loader::getDebugSourcePath(const Path& path)
{
    return path;
}

QString Loader::getDebugSourceText(const Path& path, int line)
{
    if (path != m_sourcePath) {
        m_sourcePath = path;
        m_sourceLines.clear();
        QFile file(path.canonicalPathQString());
        // The executable names the file; it may be a device that never ends.
        if (QFileInfo(file).isFile() && file.size() <= MaxSourceFile && file.open(QIODevice::ReadOnly))
            m_sourceLines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }
    return line > 0 && line <= m_sourceLines.size() ? m_sourceLines[line - 1] : QString();
}
