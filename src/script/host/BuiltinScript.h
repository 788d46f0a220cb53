// The objects of a context that stands by itself: `Script`, also named `WScript`, with Echo(text), which
// writes the text to standard output without a newline, and Arguments, the array of the host's arguments.
// The first Echo that cannot be written throws HException "cannot write to standard output: REASON".
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESValue.h"

class BuiltinScript : public ESClass {
public:
    BuiltinScript() : ESClass("Object") {}

    // The strings are taken as UTF-8. This must outlive the context.
    void install(ESContext* context, int argc, char** argv);
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

    ESObject* arguments() const { return m_arguments; }

private:
    ESObject* m_arguments = nullptr;
    bool m_failed = false;
};
