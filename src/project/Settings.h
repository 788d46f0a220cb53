// A file of named strings, shared with other processes that may write it at the same moment: a lock
// file guards the moment of writing, what others wrote since is taken over, and the file is replaced
// as a whole. Reading a file that is missing or of another kind gives an empty table; a failure to
// save is silent, since no work of the user depends on it.
#pragma once

#include "support/Path.h"

#include <QDateTime>
#include <QMap>
#include <QString>

class Settings {
public:
    Settings() = default;
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    // An empty path keeps the entries in memory only.
    void setPath(const Path& path) { m_path = path; }
    const Path& path() const { return m_path; }

    // Replaces the table by what the file holds.
    void load();
    // Writes the table as it is. False when the file could not be written.
    bool save();
    // Takes over what other processes changed in the file and writes back what was changed here;
    // entries changed here win. The file stays untouched when nothing was changed here.
    bool sync();

    QString readEntry(const QString& key, const QString& otherwise = QString(), bool* found = nullptr) const;
    void writeEntry(const QString& key, const QString& value);
    void removeEntry(const QString& key);

    struct Setting {
        QString value;
        bool modified = false;
        bool operator==(const Setting&) const = default;
    };

private:
    using Table = QMap<QString, Setting>;
    bool read(Table& table);
    void mergeChanges(const Table& inFile);
    bool write();
    bool mayReplaceFile() const;
    bool changed() const;

    Path m_path;
    Table m_entries;
    Table m_loaded; // as last read or written: an entry that is only here was removed by us
    QDateTime m_time;
};
