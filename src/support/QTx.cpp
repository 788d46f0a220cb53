#include "support/QTx.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

namespace QTx {

namespace {

QString g_applicationDirectory;
QString g_rootDirectory;

QString home()
{
    const char* value = getenv("HOME");
    return value ? QFile::decodeName(value) : QString();
}

} // namespace

void setApplicationPath(const char* argv0, int levels)
{
    QString name = QFile::decodeName(argv0);
    // A name without a slash was found by the shell along PATH, not in the current directory.
    if (!strchr(argv0, '/')) {
        QString found = QStandardPaths::findExecutable(name);
        if (!found.isEmpty())
            name = found;
    }
    QFileInfo info(name);
    QString file = info.canonicalFilePath();
    g_applicationDirectory = file.isEmpty() ? info.absolutePath() : QFileInfo(file).path();
    QDir root(g_applicationDirectory);
    for (int i = 0; i < levels; ++i)
        root.setPath(QDir::cleanPath(root.path() + QLatin1String("/..")));
    g_rootDirectory = root.path();
}

const QString& applicationDirectory()
{
    return g_applicationDirectory;
}

const QString& rootDirectory()
{
    return g_rootDirectory;
}

bool haveHome()
{
    return QFileInfo(home()).isAbsolute();
}

QString userDocumentsDirectory()
{
    return home() + QLatin1String("/Documents");
}

QString userLocalAppDataDirectory(const QString& name)
{
    return home() + QLatin1String("/.") + name.toLower().replace(QLatin1Char(' '), QLatin1Char('_'));
}

bool makeDir(const QDir& directory)
{
    if (directory.exists())
        return true;
    if (directory.isRoot())
        return false;
    return QDir().mkpath(directory.absolutePath());
}

bool makeDir(const QString& directory)
{
    return makeDir(QDir(directory));
}

bool removeFile(const QString& file)
{
    return QFile::remove(file);
}

std::optional<QString> readText(const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

void sleep(unsigned milliseconds)
{
    usleep(milliseconds * 1000);
}

void* loadDLL(const QString& file)
{
    return dlopen(file.toLatin1().constData(), RTLD_NOW | RTLD_LOCAL);
}

void* getDLLAddress(void* library, const QString& name)
{
    return dlsym(library, name.toLatin1().constData());
}

void unloadDLL(void* library)
{
    if (library)
        dlclose(library);
}

QString dllError()
{
    const char* text = dlerror();
    return text ? QString::fromLocal8Bit(text) : QString();
}

} // namespace QTx
