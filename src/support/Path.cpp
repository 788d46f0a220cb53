#include "support/Path.h"

#include "support/QTx.h"

#include <memory>
#include <vector>

struct Path::PathData : QSharedData {
    PathData() = default;
    // A detached copy is about to change: the file info is not worth carrying over.
    PathData(const PathData& other) : QSharedData(other), osPath(other.osPath) {}
    QString osPath; // the canonical form is the same text here
    mutable std::unique_ptr<QFileInfo> info;
};

Path::Path() : m_data(new PathData) {}
Path::Path(const char* path) : Path(QFile::decodeName(path)) {}
Path::Path(const QString& path) : Path()
{
    assign(path);
}
Path::Path(const std::string& path) : Path(path.c_str()) {}
Path::Path(const Path&) = default;
Path& Path::operator=(const Path&) = default;
Path::~Path() = default;

Path& Path::operator=(const QString& path)
{
    assign(path);
    return *this;
}

Path& Path::operator=(const char* path)
{
    assign(QFile::decodeName(path));
    return *this;
}

Path& Path::operator=(const std::string& path)
{
    return *this = path.c_str();
}

void Path::setPath(const QString& path)
{
    assign(path);
}

void Path::setPath(const char* path)
{
    *this = path;
}

void Path::setPath(const std::string& path)
{
    *this = path;
}

void Path::assign(QString text)
{
    removeRelativePaths(text);
    m_data->osPath = text;
    m_data->info.reset();
}

std::string Path::osPath() const
{
    return QFile::encodeName(m_data->osPath).toStdString();
}

const QString& Path::osPathQString() const
{
    return m_data->osPath;
}

std::string Path::canonicalPath() const
{
    return osPath();
}

const QString& Path::canonicalPathQString() const
{
    return m_data->osPath;
}

const QFileInfo& Path::info() const
{
    const PathData* data = m_data.constData();
    if (!data->info)
        data->info = std::make_unique<QFileInfo>(data->osPath);
    return *data->info;
}

QString Path::filePath() const
{
    return info().filePath();
}

QString Path::fileName() const
{
    return info().fileName();
}

QString Path::baseName() const
{
    return info().baseName();
}

QString Path::extension(bool complete) const
{
    return complete ? info().completeSuffix() : info().suffix();
}

QString Path::dirPath(bool absolute) const
{
    return absolute ? info().absolutePath() : info().path();
}

QDir Path::dir(bool absolute) const
{
    return absolute ? info().absoluteDir() : info().dir();
}

bool Path::exists() const
{
    return !isEmpty() && info().exists();
}

bool Path::writable() const
{
    return info().isWritable();
}

bool Path::readable() const
{
    return info().isReadable();
}

QDateTime Path::created() const
{
    return info().birthTime();
}

QDateTime Path::lastModified() const
{
    return info().lastModified();
}

QDateTime Path::lastRead() const
{
    return info().lastRead();
}

qint64 Path::size() const
{
    return info().size();
}

bool Path::isEmpty() const
{
    return m_data->osPath.isEmpty();
}

bool Path::operator==(const Path& other) const
{
    return canonicalPathQString() == other.canonicalPathQString();
}

bool Path::operator!=(const Path& other) const
{
    return !(*this == other);
}

bool Path::operator<(const Path& other) const
{
    return canonicalPathQString() < other.canonicalPathQString();
}

bool Path::equal(const QString& a, const QString& b)
{
    return a == b;
}

Path Path::operator+(const QString& text) const
{
    return Path(osPathQString() + text);
}

Path& Path::operator+=(const QString& text)
{
    assign(osPathQString() + text);
    return *this;
}

QStringList Path::dirPathQStringList(bool absolute) const
{
    return dirPath(absolute).split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

QStringList Path::filePathQStringList(bool absolute) const
{
    return (absolute ? info().absoluteFilePath() : filePath()).split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

// One pass with the places of the slashes at hand, so that a text of nothing but steps is linear.
void Path::removeRelativePaths(QString& text)
{
    const QLatin1Char dot('.');
    const QLatin1Char slash('/');
    if (text.contains(QLatin1String("/."))) {
        QString kept;
        kept.reserve(text.size());
        std::vector<qsizetype> slashes; // in `kept`
        for (qsizetype at = 0; at < text.size(); ++at) {
            if (text[at] == dot && kept.endsWith(slash)) {
                qsizetype next = at + 1;
                if (next < text.size() && text[next] == dot) {
                    // The part in front of the step may be a slash itself, but not the step's own.
                    size_t parent = slashes.size() - 1;
                    while (parent > 0 && slashes[parent] > kept.size() - 3)
                        --parent;
                    if (slashes[parent] <= kept.size() - 3) {
                        kept.truncate(slashes[parent]);
                        slashes.resize(parent);
                        at = next;
                        continue;
                    }
                } else if (next == text.size() || text[next] == slash) {
                    kept.chop(1);
                    slashes.pop_back();
                    continue;
                }
            }
            if (text[at] == slash)
                slashes.push_back(kept.size());
            kept += text[at];
        }
        text = kept;
    }
    // One pass that drops every slash behind a slash: runs collapse to one.
    if (text.contains(QLatin1String("//"))) {
        QString collapsed;
        collapsed.reserve(text.size());
        for (QChar c : std::as_const(text))
            if (c != slash || !collapsed.endsWith(slash))
                collapsed += c;
        text = collapsed;
    }
}

bool Path::relativeDirPath(const QString& from, const QString& to, QString& result)
{
    result.clear();
    if (to == QLatin1String("."))
        return true;
    const QLatin1Char slash('/');
    QStringList source = QFileInfo(from).absoluteFilePath().split(slash, Qt::SkipEmptyParts);
    QStringList target = QFileInfo(to).absoluteFilePath().split(slash, Qt::SkipEmptyParts);
    qsizetype common = 0;
    while (common < source.size() && common < target.size() && source[common] == target[common])
        ++common;
    if (common == 0)
        return false;
    for (qsizetype i = common; i < source.size(); ++i)
        result += QLatin1String("../");
    for (qsizetype i = common; i < target.size(); ++i)
        result += target[i] + slash;
    result.chop(1);
    return true;
}

bool Path::relativeFilePath(const QString& from, const QString& file, QString& result)
{
    QFileInfo info(file);
    // A bare file name has the directory ".", which is `from` itself.
    if (!relativeDirPath(from, info.path(), result))
        return false;
    if (!result.isEmpty())
        result += QLatin1Char('/');
    result += info.fileName();
    return true;
}

QString Path::relativeFilePath(const QString& from, const QString& file)
{
    QString result;
    if (relativeFilePath(from, file, result))
        return result;
    return QFileInfo(file).absoluteFilePath();
}

bool Path::ensureDirExists(const QString& file)
{
    return QTx::makeDir(QFileInfo(file).absolutePath());
}
