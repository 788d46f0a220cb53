// What Tab offers at the prompt: objects and their functions, the program's symbols inside the quotes of an
// expression, and its source files inside those of a line's breakpoint.
#pragma once

#include "driver/session/Completer.h"

class ESContext;
class ProgramRun;

class CommandCompletion : public Completer {
public:
    // Neither is owned.
    CommandCompletion(ProgramRun& run, ESContext* context) : m_run(run), m_context(context) {}

    Completion complete(const QString& line, qsizetype cursor) override;

private:
    Completion symbols(QStringView before) const;
    Completion files(QStringView before, qsizetype start) const;
    Completion names(QStringView before) const;
    Completion shortWord(QStringView before) const;

    ProgramRun& m_run;
    ESContext* m_context;
};
