// Where the source files that an executable names lie on this host: pairs of path prefixes, which match at
// the ends of path parts. The first pair that matches is taken.
#pragma once

#include <QString>

#include <vector>

class SourceMap {
public:
    SourceMap() = default;

    // From a prefix as the executable has it to the one that the editor knows. Slashes at the end do not
    // matter. Throws RequestFailure for an empty first prefix and for too many pairs.
    void add(const QString& built, const QString& here);

    QString toEditor(const QString& path) const;
    QString fromEditor(const QString& path) const;

private:
    struct Entry {
        QString built;
        QString here;
    };
    static bool replace(QString& path, const QString& from, const QString& to);

    std::vector<Entry> m_entries;
};
