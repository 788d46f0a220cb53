// Which configurations of a solution each one inherits, directly and through others.
#pragma once

#include <QHash>
#include <QStringList>

class ConfigurationInheritance {
public:
    void clear();
    // What a configuration itself says that it inherits; in place of what it said before.
    void set(const QString& configuration, const QStringList& inherited);

    // The solution says something about it.
    bool knows(const QString& configuration) const { return m_direct.contains(configuration); }
    // All that a configuration inherits, each before those that it inherits in turn. A cycle ends where it
    // comes back to a configuration that is listed already. "Common" is there only when the configuration
    // itself names it. Takes time for as many as there are; the latest list is kept, since a session asks for
    // one configuration. Good until the next call.
    const QStringList& of(const QString& configuration) const;

private:
    QHash<QString, QStringList> m_direct;
    mutable QString m_latest; // null when no list is kept
    mutable QStringList m_latestList;
};
