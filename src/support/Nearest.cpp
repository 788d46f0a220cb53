#include "support/Nearest.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr qsizetype MaximumLength = 100; // characters; nobody types a longer name

// Of optimal string alignment, over three rows of its table.
qsizetype distance(const QString& a, const QString& b)
{
    std::array<std::vector<qsizetype>, 3> rows;
    for (auto& row : rows)
        row.resize(size_t(b.size()) + 1);
    for (qsizetype j = 0; j <= b.size(); ++j)
        rows[0][size_t(j)] = j;
    for (qsizetype i = 1; i <= a.size(); ++i) {
        auto& row = rows[size_t(i % 3)];
        const auto& above = rows[size_t((i + 2) % 3)];
        const auto& twoAbove = rows[size_t((i + 1) % 3)];
        row[0] = i;
        for (qsizetype j = 1; j <= b.size(); ++j) {
            size_t at = size_t(j);
            bool same = a[i - 1] == b[j - 1];
            row[at] = std::min({row[at - 1] + 1, above[at] + 1, above[at - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[at] = std::min(row[at], twoAbove[at - 2] + 1);
        }
    }
    return rows[size_t(a.size() % 3)][size_t(b.size())];
}

} // namespace

QString nearestName(const QString& given, const QStringList& names)
{
    if (given.size() > MaximumLength)
        return {};
    const QString wanted = given.toCaseFolded();
    qsizetype best = wanted.size() / 3 + 1;
    QString nearest;
    for (const QString& name : names) {
        if (name.size() > MaximumLength)
            continue;
        qsizetype errors = distance(wanted, name.toCaseFolded());
        if (errors < best) {
            best = errors;
            nearest = name;
        }
    }
    return nearest;
}
