// What ends a script. ESException carries a script value, as a rule an Error object, and becomes a
// completion at ESContext::eval. ESFatalError means that the engine itself gave up, and passes
// through eval to the native caller.
#pragma once

#include "script/engine/ESValue.h"

#include <QString>

class ESException {
public:
    explicit ESException(const ESValue& value) : m_value(value) {}
    const ESValue& value() const { return m_value; }

private:
    ESValue m_value;
};

class ESFatalError {
public:
    explicit ESFatalError(const char* text) : m_text(QString::fromLatin1(text)) {}
    explicit ESFatalError(const QString& text) : m_text(text) {}
    const QString& text() const { return m_text; }

private:
    QString m_text;
};
