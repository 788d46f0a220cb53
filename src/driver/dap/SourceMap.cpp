#include "driver/dap/SourceMap.h"

#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"

namespace {

QString withoutSlash(QString path)
{
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

void SourceMap::add(const QString& built, const QString& here)
{
    if (built.isEmpty() || here.isEmpty())
        throw RequestFailure("a pair of \"sourceMap\" has an empty path");
    if (m_entries.size() == size_t(DapLimits::SourceMapEntries))
        throw RequestFailure("\"sourceMap\" has too many pairs");
    m_entries.push_back({withoutSlash(built), withoutSlash(here)});
}

bool SourceMap::replace(QString& path, const QString& from, const QString& to)
{
    bool matches =
        path.startsWith(from) && (path.size() == from.size() || path[from.size()] == QLatin1Char('/'));
    if (matches)
        path = to + path.mid(from.size());
    return matches;
}

QString SourceMap::toEditor(const QString& path) const
{
    QString result = path;
    for (const Entry& entry : m_entries)
        if (replace(result, entry.built, entry.here))
            break;
    return result;
}

QString SourceMap::fromEditor(const QString& path) const
{
    QString result = path;
    for (const Entry& entry : m_entries)
        if (replace(result, entry.here, entry.built))
            break;
    return result;
}
