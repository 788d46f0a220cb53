// The tool's own script context, in which target scripts and debug commands run, and the two objects with
// which scripts write to standard output.
#pragma once

#include "script/host/ESQObject.h"
#include "script/host/ScriptSystem.h"

#include <memory>

class ESContext;

class ConsoleScriptSystem : public ScriptSystem {
    Q_OBJECT
public:
    ConsoleScriptSystem();
    ~ConsoleScriptSystem() override;

    ESContext* context() { return m_context.get(); }

    // Throws HException with the message of an Error that the script threw, "uncaught exception - " and
    // the text of any other value, or the text of what the engine or a host function gave up with; throws
    // Interrupted when Ctrl-C stopped the script. The flag plays no part.
    bool execute(const QString& text, bool flag) override;
    bool executing() const override { return m_depth > 0; }
    bool stopRequested() const override;
    void requestStop() override { m_stopRequested = true; }
    void setSourceName(const QString& name) override { m_sourceName = name; }

private:
    std::unique_ptr<ESContext> m_context;
    QString m_sourceName;
    int m_depth = 0;
    bool m_stopRequested = false;
};

// Console.WriteLine(text): the text and a newline.
class Console : public ESQObject {
    Q_OBJECT
public:
    ESObject* installScriptObject(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
};

// WScript.Echo(text): the text alone.
class WScript : public ESQObject {
    Q_OBJECT
public:
    ESObject* installScriptObject(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
};
