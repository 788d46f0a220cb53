// How an editor counts and writes, and what it understands, as its initialize request says.
#pragma once

#include "driver/dap/SourceMap.h"

#include <QString>

class RequestArguments;

class ClientFormat {
public:
    ClientFormat() = default;
    // Throws RequestFailure for a way to write paths that is not known.
    explicit ClientFormat(const RequestArguments& initialize);

    int line(int number) const { return number - (m_linesStartAt1 ? 0 : 1); }
    int lineFrom(int number) const { return number + (m_linesStartAt1 ? 0 : 1); }
    int firstColumn() const { return m_columnsStartAt1 ? 1 : 0; }
    // Paths as the executable has them, from and to those of the editor.
    QString path(const QString& built) const;
    QString pathFrom(const QString& editors) const;

    bool progress() const { return m_progress; }
    bool invalidated() const { return m_invalidated; }

    SourceMap sourceMap;

private:
    bool m_linesStartAt1 = true;
    bool m_columnsStartAt1 = true;
    bool m_uris = false;
    bool m_progress = false;
    bool m_invalidated = false;
};
