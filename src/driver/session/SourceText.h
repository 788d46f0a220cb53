// The lines of one source file at a time, as they are on disk now: the file that an executable names may be
// missing, shorter than its line records say, a directory or a device, or not the text that was compiled.
// What cannot be read has no lines.
#pragma once

#include "support/Path.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <vector>

class SourceText {
public:
    // The text of a line, counted from 1, without its end; a long one is cut. Null beyond the end.
    // Costs a look at the file's date.
    QString line(const Path& path, int line);
    // 0 for what cannot be read.
    int lines(const Path& path);

private:
    void update(const Path& path);

    Path m_path;
    bool m_read = false; // m_path was looked at
    QDateTime m_modified;
    qint64 m_size = -1;
    QByteArray m_text;
    std::vector<qsizetype> m_starts; // of each line; one more than there are lines
};
