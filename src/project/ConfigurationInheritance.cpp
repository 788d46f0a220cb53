#include "project/ConfigurationInheritance.h"

#include <QSet>

void ConfigurationInheritance::clear()
{
    m_direct.clear();
    m_latest = QString();
}

void ConfigurationInheritance::set(const QString& configuration, const QStringList& inherited)
{
    m_direct.insert(configuration, inherited);
    m_latest = QString();
}

const QStringList& ConfigurationInheritance::of(const QString& configuration) const
{
    if (!m_latest.isNull() && m_latest == configuration)
        return m_latestList;
    m_latest = configuration;
    m_latestList.clear();
    QSet<QString> seen{configuration};
    const QStringList own = m_direct.value(configuration);
    QStringList pending(own.crbegin(), own.crend()); // the next one stands last
    while (!pending.isEmpty()) {
        QString name = pending.takeLast();
        if (seen.contains(name))
            continue;
        seen.insert(name);
        m_latestList.append(name);
        const QStringList more = m_direct.value(name);
        for (auto each = more.crbegin(); each != more.crend(); ++each)
            if (*each != QLatin1String("Common")) // its place is told by the configuration itself
                pending.append(*each);
    }
    return m_latestList;
}
