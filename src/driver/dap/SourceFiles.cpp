#include "driver/dap/SourceFiles.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/ClientFormat.h"

#include <QDir>
#include <QFileInfo>

namespace {

// The name that links lead to, since editors open one or the other.
QString canonical(const QString& path)
{
    QString target = QFileInfo(path).canonicalFilePath();
    return target.isEmpty() ? QDir::cleanPath(path) : target;
}

} // namespace

void SourceFiles::update()
{
    m_files.clear();
    m_here.clear();
    const QStringList executables = m_debugger.executableNames();
    for (const QString& executable : executables) {
        const QStringList names = m_debugger.sourceFileNames(executable);
        for (const QString& name : names) {
            Path built(name);
            QString place = here(executable, built);
            m_files.push_back({executable, built, place});
            m_here.emplace(built, place);
        }
    }
}

QString SourceFiles::here(const QString& executable, const Path& built) const
{
    QString path = built.osPathQString();
    if (QDir::isAbsolutePath(path))
        return path;
    QString beside = QDir(QFileInfo(executable).absolutePath()).absoluteFilePath(path);
    return QDir::cleanPath(QFileInfo::exists(beside) ? beside : QDir::current().absoluteFilePath(path));
}

const SourceFiles::File* SourceFiles::find(const QString& editorsPath) const
{
    QString wanted = QDir::cleanPath(m_client.pathFrom(editorsPath));
    for (const File& file : m_files)
        if (QDir::cleanPath(file.here) == wanted)
            return &file;
    wanted = canonical(wanted);
    for (const File& file : m_files)
        if (canonical(file.here) == wanted)
            return &file;
    return nullptr;
}

QJsonObject SourceFiles::source(const Path& built) const
{
    auto found = m_here.find(built);
    QString path = found == m_here.end() ? here(QString(), built) : found->second;
    return {{QStringLiteral("name"), built.fileName()}, {QStringLiteral("path"), m_client.path(path)}};
}
