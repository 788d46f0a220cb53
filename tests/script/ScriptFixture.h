// A context with a function print(...), which writes its arguments, separated by blanks, as one line.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"
#include "script/native/ESLibrary.h"

template <typename Context = ESContext> class ScriptWorldOf : public ESClass {
public:
    ScriptWorldOf() : ESClass("print")
    {
        ESLibrary::mkexec(nullptr, &m_context);
        biinst(&m_context, m_context.globalObject(), {"print", "print", 0, false, 0},
               m_context.functionPrototype(), this);
    }

    Context& context() { return m_context; }
    const QString& output() const { return m_output; }

    ESCompletion run(const QString& source)
    {
        try {
            ESCompletion completion = m_context.eval(source);
            if (completion.type == ESCompletion::Thrown)
                m_output += "error: " + completion.text + '\n';
            return completion;
        } catch (const ESFatalError& error) {
            m_output += "fatal: " + error.text() + '\n';
            return {};
        }
    }
    // The completion value as text, or "error: " and the message.
    std::string value(const QString& source)
    {
        try {
            ESCompletion completion = m_context.eval(source);
            if (completion.type == ESCompletion::Thrown)
                return "error: " + completion.text.toStdString();
            return m_context.toString(completion.value, 10).toStdString();
        } catch (const ESFatalError& error) {
            return "fatal: " + error.text().toStdString();
        }
    }

    void call(ESContext* context, ESObject*, ESObject*, int argc, ESValue* argv) override
    {
        QString line;
        for (int i = 0; i < argc; ++i)
            line += (i ? " " : "") + context->toString(argv[i], 10);
        m_output += line + '\n';
        argv[0] = g_undefined;
    }

private:
    Context m_context;
    QString m_output;
};

using ScriptWorld = ScriptWorldOf<>;
