#include "driver/dap/Progress.h"

#include "driver/dap/Messages.h"

#include <QJsonObject>

#include <algorithm>

void Progress::show(int done, int total, const char* label, const char*)
{
    if (label) {
        end();
        ++m_number;
        m_open = true;
        m_done = m_percent = 0;
        m_total = 0;
        QString title = QString::fromLocal8Bit(label);
        if (m_bars)
            m_messages.event("progressStart", {{QStringLiteral("progressId"), id()},
                                               {QStringLiteral("title"), title},
                                               {QStringLiteral("requestId"), m_request},
                                               {QStringLiteral("cancellable"), true},
                                               {QStringLiteral("percentage"), 0}});
        else
            m_messages.output("console", title + QLatin1Char('\n'));
    }
    if (total >= 0)
        m_total = total;
    if (done >= 0)
        m_done = done;
    if (!m_open || m_total <= 0)
        return;
    int percent = int(std::min<int64_t>(int64_t(m_done) * 100 / m_total, 100));
    if (m_bars && percent != m_percent)
        m_messages.event("progressUpdate",
                         {{QStringLiteral("progressId"), id()}, {QStringLiteral("percentage"), percent}});
    m_percent = percent;
    if (m_done >= m_total)
        end();
}

void Progress::end()
{
    if (m_open && m_bars)
        m_messages.event("progressEnd", {{QStringLiteral("progressId"), id()}});
    m_open = false;
}
