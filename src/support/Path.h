// A file path as a value: shared until changed, always normalised. The text that enters is freed of
// "/./", "/../" and "//" steps (removeRelativePaths). On this platform the path as the operating
// system takes it and the canonical form, which all comparison uses, are the same text.
#pragma once

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSharedDataPointer>
#include <QString>
#include <QStringList>
#include <string>

class Path {
public:
    Path();
    Path(const char* path);
    Path(const QString& path);
    Path(const std::string& path);
    Path(const Path&);
    Path& operator=(const Path&);
    Path& operator=(const QString& path);
    Path& operator=(const char* path);
    Path& operator=(const std::string& path);
    ~Path();

    void setPath(const QString& path);
    void setPath(const char* path);
    void setPath(const std::string& path);

    // The narrow forms are in the file system's encoding.
    std::string osPath() const;
    const QString& osPathQString() const;
    std::string canonicalPath() const;
    const QString& canonicalPathQString() const;

    QString filePath() const;
    QString fileName() const; // the last part
    QString baseName() const; // the last part up to its first dot
    // What stands behind the first dot of the last part (complete) or behind its last one.
    QString extension(bool complete = true) const;
    QString dirPath(bool absolute = false) const;
    QDir dir(bool absolute = false) const;

    // The file system is asked once for each state of the path; a change of the path asks anew.
    bool exists() const;
    bool writable() const;
    bool readable() const;
    QDateTime created() const;
    QDateTime lastModified() const;
    QDateTime lastRead() const;
    qint64 size() const;
    bool isEmpty() const; // the text is empty

    // On the canonical text, case-sensitive.
    bool operator==(const Path& other) const;
    bool operator!=(const Path& other) const;
    bool operator<(const Path& other) const;
    static bool equal(const QString& a, const QString& b);

    // Plain concatenation, then normalised: no separator is added, so Path("a") + "b" is "ab".
    Path operator+(const QString& text) const;
    Path& operator+=(const QString& text);

    QStringList dirPathQStringList(bool absolute) const;
    QStringList filePathQStringList(bool absolute) const;

    static void removeRelativePaths(QString& text);
    // The way from the directory `from` to the directory `to`; false when they share no leading part.
    static bool relativeDirPath(const QString& from, const QString& to, QString& result);
    static bool relativeFilePath(const QString& from, const QString& file, QString& result);
    // The way to `file` as text; the file's absolute path when there is no relative one.
    static QString relativeFilePath(const QString& from, const QString& file);
    // Makes the directory of `file` with its missing parents.
    static bool ensureDirExists(const QString& file);

    static bool isPathDelimiter(const QChar& c) { return c == QLatin1Char('/'); }
    static QString toOsPath(const QString& path) { return path; }
    static QString toCanonicalPath(const QString& path) { return path; }

private:
    struct PathData;
    const QFileInfo& info() const;
    void assign(QString text);
    QSharedDataPointer<PathData> m_data;
};
