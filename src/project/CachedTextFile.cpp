#include "project/CachedTextFile.h"

#include "support/HException.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

namespace {

struct Entry {
    QDateTime time;
    qint64 size = -1;
    QString text;
};

} // namespace

QString CachedTextFile::read(const QString& path, QDateTime* time)
{
    static QHash<QString, Entry> cache;
    QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly)) {
        cache.remove(path);
        throw HException(QLatin1String("can't open file ") + path);
    }
    Entry& entry = cache[path];
    if (entry.size != info.size() || entry.time != info.lastModified())
        entry = {info.lastModified(), info.size(), QString::fromUtf8(file.readAll())};
    if (time)
        *time = entry.time;
    return entry.text;
}
