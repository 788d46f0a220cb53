// What the tool asks of its script console: to carry out a text, and to be stopped.
#pragma once

#include <QObject>
#include <QStringList>

class ScriptSystem : public QObject {
    Q_OBJECT
public:
    ~ScriptSystem() override;

    // True when the text was carried out; throws HException with the script's own message when it failed.
    virtual bool execute(const QString& text, bool flag) = 0;
    virtual QStringList executeWithResult(const QString& text);
    virtual bool executing() const = 0;
    virtual bool stopRequested() const = 0;
    virtual void requestStop() = 0;
    // The file that the next texts come from, for messages.
    virtual void setSourceName(const QString&) {}
};

// The one of the process; null until the tool has made it.
extern ScriptSystem* scriptSystem;
