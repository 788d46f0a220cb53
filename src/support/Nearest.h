// Which of the names that there are was meant by one that is not there.
#pragma once

#include <QString>
#include <QStringList>

// The name that is the fewest typing errors away: a letter too many, missing, wrong, or two swapped; upper
// and lower case count as one. Null when more than a third of the letters would be wrong. Of several the
// first.
QString nearestName(const QString& given, const QStringList& names);
