// A host object whose Qt properties scripts can read and write, through the functions GetProperty(name)
// and SetProperty(name, value).
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESValue.h"

#include <QObject>

class ESQObject : public QObject, public ESClass {
    Q_OBJECT
public:
    ESQObject();
    ~ESQObject() override;

    // Makes the global object that is named after the most derived class. A subclass calls this first and
    // adds its own functions, with ids from FirstFreeId.
    virtual ESObject* installScriptObject(ESContext* context);
    // For rows of a subclass that have no handler; here, nothing.
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

    // The property named by argv[0], of any QObject: into argv[0], or from argv[1]. Throw HException
    // "unknown property: NAME" or "invalid enum value: TEXT".
    static void getProperty(QObject* object, ESContext* context, ESValue* argv);
    static void setProperty(QObject* object, ESContext* context, ESValue* argv);
    using QObject::setProperty;

protected:
    enum { FirstFreeId = 2 };
};
