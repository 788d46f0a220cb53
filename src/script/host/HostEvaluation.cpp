#include "script/host/HostEvaluation.h"

#include "script/engine/ESException.h"
#include "support/HException.h"
#include "support/Warning.h"

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
        printWarning(
            QStringLiteral("%1:%2: %3").arg(warning.file, QString::number(warning.line), warning.text));
}
