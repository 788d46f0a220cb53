#include "support/Warning.h"

#include <cstdio>

void printWarning(const QString& text)
{
    fprintf(stderr, "warning: %s\n", text.toLocal8Bit().constData());
}
