// What the user is told while the session goes on.
#pragma once

#include <QString>

// "warning: TEXT" on a line of standard error.
void printWarning(const QString& text);
