#include "driver/session/Release.h"

#include <cstdio>

QString RELEASE_version(const QString& program)
{
    return QStringLiteral("Forgeline for MAXQ30 %1 - Release 2.0.0.2009012302.4051").arg(program);
}

void RELEASE_printVersionToStderr(const char* program)
{
    fprintf(stderr, "%s\n", RELEASE_version(QString::fromLocal8Bit(program)).toLocal8Bit().constData());
    fprintf(stderr, "Downloads, verifies, runs and debugs programs on MAXQ30 targets\n");
}
