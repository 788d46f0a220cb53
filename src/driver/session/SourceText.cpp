#include "driver/session/SourceText.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr qint64 MaximumSourceFile = 64 * 1024 * 1024; // bytes
constexpr qsizetype MaximumShownLine = 4096;           // bytes

} // namespace

void SourceText::update(const Path& path)
{
    QFileInfo file(path.canonicalPathQString());
    QDateTime modified = file.lastModified();
    if (m_read && path == m_path && modified == m_modified && file.size() == m_size)
        return;
    m_read = true;
    m_path = path;
    m_modified = modified;
    m_size = file.size();
    m_text.clear();
    m_starts.assign(1, 0);
    QFile source(file.filePath());
    // A device may never end.
    if (!file.isFile() || file.size() > MaximumSourceFile || !source.open(QIODevice::ReadOnly))
        return;
    m_text = source.read(MaximumSourceFile);
    for (qsizetype at = m_text.indexOf('\n'); at >= 0; at = m_text.indexOf('\n', at + 1))
        m_starts.push_back(at + 1);
    if (m_starts.back() != m_text.size()) // a last line without an end counts
        m_starts.push_back(m_text.size() + 1);
}

QString SourceText::line(const Path& path, int line)
{
    update(path);
    if (line < 1 || size_t(line) >= m_starts.size())
        return {};
    qsizetype start = m_starts[size_t(line) - 1];
    qsizetype length = m_starts[size_t(line)] - 1 - start;
    if (length > 0 && m_text[start + length - 1] == '\r')
        --length;
    QString text = QString::fromUtf8(m_text.constData() + start, std::min(length, MaximumShownLine));
    return text.isNull() ? QStringLiteral("") : text;
}

int SourceText::lines(const Path& path)
{
    update(path);
    return int(m_starts.size()) - 1;
}
