// Texts of files that are read again and again, such as target scripts. A file is read anew when its
// time or size changed.
#pragma once

#include <QDateTime>
#include <QString>

class CachedTextFile {
public:
    // The whole file as UTF-8 text. `time`, when not null, takes the file's time. Throws HException
    // "can't open file NAME".
    static QString read(const QString& path, QDateTime* time);
};
