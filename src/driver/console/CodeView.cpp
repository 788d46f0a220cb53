#include "driver/console/CodeView.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/session/Loader.h"
#include "driver/session/SessionFace.h"

#include <algorithm>

namespace {

// The rows around a place, as far as there are any.
struct Window {
    int64_t first;
    int64_t last;
};

Window around(int64_t at, unsigned before, unsigned after, int64_t lowest, int64_t highest)
{
    return {std::max(lowest, at - before), std::min(highest, at + after)};
}

} // namespace

bool CodeView::select(unsigned number)
{
    SymbolicDebuggerInterface& debugger = m_run.debugger();
    Frame* frame = debugger.getFrame(number);
    if (!frame)
        return false;
    m_frame = number;
    m_path = Path();
    m_line = 0;
    QString name;
    debugger.locate(frame, name, m_path, m_function, m_line, m_address);
    return true;
}

void CodeView::onBreakpoint()
{
    QString exception = m_run.debugger().lastMatchedException();
    if (!exception.isEmpty())
        m_run.loader().face().showLines({exception});
    locate(0);
}

void CodeView::locate(unsigned frame)
{
    if (select(frame))
        showCode(0, 0);
}

Frame* CodeView::frame() const
{
    return m_run.stopped() ? m_run.debugger().getFrame(m_frame) : nullptr;
}

ExpressionContext CodeView::context() const
{
    ExpressionContext context;
    context.frame = frame();
    if (context.frame)
        context.file = m_path;
    return context;
}

QStringList CodeView::sourceLines(unsigned before, unsigned after) const
{
    Loader& loader = m_run.loader();
    Path path = loader.getDebugSourcePath(m_path);
    int count = loader.sourceText().lines(path);
    QStringList lines;
    if (m_line > count)
        return lines;
    Window window = around(m_line, before, after, 1, count);
    for (int64_t number = window.first; number <= window.last; ++number)
        lines.append(QString::number(number) + QLatin1String(":\t") +
                     loader.sourceText().line(path, int(number)));
    return lines;
}

QStringList CodeView::instructions(unsigned before, unsigned after) const
{
    SymbolicDebuggerInterface& debugger = m_run.debugger();
    debugger.locateDisassembly(m_address);
    QStringList text, lines;
    debugger.getDisassemblyText(text);
    int at = debugger.getDisassemblyLineNumber(m_address);
    if (at < 0 || at >= text.size())
        return lines;
    Window window = around(at, before, after, 0, text.size() - 1);
    for (int64_t number = window.first; number <= window.last; ++number)
        lines.append(u'\t' + text[number]);
    return lines;
}

void CodeView::showCode(unsigned before, unsigned after)
{
    bool source = m_sourceMode && m_line > 0;
    m_run.loader().face().showLines(source ? sourceLines(before, after) : instructions(before, after));
}
