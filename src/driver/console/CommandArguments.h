// The arguments of one call of a debug command. Those that a call leaves out, or gives as undefined, have the
// value that the command names.
#pragma once

#include "driver/console/DebugCommands.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

class DebugCommands::Arguments {
public:
    Arguments(ESContext* context, int argc, const ESValue* argv)
        : m_context(context), m_argc(argc), m_argv(argv)
    {
    }

    ESContext* context() const { return m_context; }
    ESValue value(unsigned index) const { return biarg(m_argc, m_argv, index); }
    bool has(unsigned index) const { return !value(index).isUndefined(); }
    uint32_t number(unsigned index, uint32_t otherwise = 0) const
    {
        return has(index) ? m_context->toUint32(value(index)) : otherwise;
    }
    bool boolean(unsigned index, bool otherwise = false) const
    {
        return has(index) ? ESContext::toBoolean(value(index)) : otherwise;
    }
    // Null when left out.
    QString text(unsigned index) const { return has(index) ? m_context->toString(value(index)) : QString(); }

private:
    ESContext* m_context;
    int m_argc;
    const ESValue* m_argv;
};
