#include "driver/dap/ClientFormat.h"

#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"

#include <QUrl>

ClientFormat::ClientFormat(const RequestArguments& initialize)
    : m_linesStartAt1(initialize.flag("linesStartAt1", true)),
      m_columnsStartAt1(initialize.flag("columnsStartAt1", true)),
      m_progress(initialize.flag("supportsProgressReporting", false)),
      m_invalidated(initialize.flag("supportsInvalidatedEvent", false))
{
    QString format = initialize.text("pathFormat", QStringLiteral("path"));
    m_uris = format == QLatin1String("uri");
    if (!m_uris && format != QLatin1String("path"))
        throw RequestFailure(QStringLiteral("unknown path format \"%1\"").arg(format));
}

QString ClientFormat::path(const QString& built) const
{
    QString path = sourceMap.toEditor(built);
    return m_uris ? QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded()) : path;
}

QString ClientFormat::pathFrom(const QString& editors) const
{
    QString path = m_uris ? QUrl(editors).toLocalFile() : editors;
    return sourceMap.fromEditor(path);
}
