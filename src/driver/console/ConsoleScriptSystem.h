// The tool's own script context, in which target scripts and debug commands run, and the two objects with
// which scripts write.
#pragma once

#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/host/ESQObject.h"
#include "script/host/ScriptSystem.h"

#include <memory>

class ESContext;
class SessionFace;

class ConsoleScriptSystem : public ScriptSystem {
    Q_OBJECT
public:
    ConsoleScriptSystem();
    ~ConsoleScriptSystem() override;

    ESContext* context() { return m_context.get(); }
    // Whether the global object has a property of that name.
    bool defines(const QString& name) const;

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

// An object with one function, which writes its argument and an end to the session's face.
class OutputObject : public ESQObject {
    Q_OBJECT
public:
    // The face is not owned.
    OutputObject(SessionFace& face, const char* end) : m_face(face), m_end(end) {}
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

protected:
    ESObject* install(ESContext* context, const char* name, const char* path);

private:
    SessionFace& m_face;
    const char* m_end;
};

// Console.WriteLine(text): the text and a newline.
class Console : public OutputObject {
    Q_OBJECT
public:
    explicit Console(SessionFace& face) : OutputObject(face, "\n") {}
    ESObject* installScriptObject(ESContext* context) override;
};

// WScript.Echo(text): the text alone.
class WScript : public OutputObject {
    Q_OBJECT
public:
    explicit WScript(SessionFace& face) : OutputObject(face, "") {}
    ESObject* installScriptObject(ESContext* context) override;
};
