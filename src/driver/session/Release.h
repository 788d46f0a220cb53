// The version, as the banner and --version tell it.
#pragma once

#include <QString>

// One line without its end.
QString RELEASE_version(const QString& program);
void RELEASE_printVersionToStderr(const char* program);
