#include "script/host/HostEvaluation.h"

#include "support/HException.h"

#include <cstdio>

ESCompletion evaluateForHost(ESContext* context, const QString& text, const QString& file)
{
    // Warnings are told on every way out.
    struct Warnings {
        ~Warnings() { printScriptWarnings(context); }
        ESContext* context;
    } warnings{context};
    try {
        return context->eval(text, file);
    } catch (const ESFatalError& failure) {
        throw HException(failure.text());
    }
}

void printScriptWarnings(ESContext* context)
{
    for (const ESWarning& warning : context->takeWarnings())
        fprintf(stderr, "warning: %s:%d: %s\n", warning.file.toLocal8Bit().constData(), warning.line,
                warning.text.toLocal8Bit().constData());
}
