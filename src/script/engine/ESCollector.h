// Gives back what nothing leads to any more: texts, and the objects that the engine makes for itself
// (`arguments`, lists of for-in, wrappers of primitives). What scripts make by themselves stays, and is where
// the marking starts, together with the stacks of all contexts.
//
// A collection happens only between two steps of a machine, and only while no native function has called back
// into a script: such a function may hold values that nobody can see. So natives need not care; a host that
// keeps a string beyond the next run of its context keeps its QString, or interns it.
#pragma once

#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESValue.h"

#include <cstddef>
#include <vector>

class ESContext;

class ESMarker {
public:
    void value(const ESValue& v)
    {
        if (v.type() == ESValue::String)
            string(v.string());
        else if (v.isObject())
            object(v.object());
    }
    // Marks a string and those that it is made of.
    void string(ESString* string);
    // Marks an object, if it is one of those that can be given back; its values are marked by finish.
    void object(ESObject* object);
    // Marks the values of an object.
    void valuesOf(ESObject* object);
    void finish();

private:
    std::vector<ESString*> m_strings;
    std::vector<ESObject*> m_objects;
};

class ESCollector {
public:
    // Every context, while it is alive.
    static void enter(ESContext* context);
    static void leave(ESContext* context);

    // Counts memory that may be given back; asks for a collection when there is enough.
    static void allocated(size_t bytes)
    {
        g_fresh += bytes;
        if (g_fresh > g_threshold) [[unlikely]]
            request();
    }
    static bool wanted() { return g_wanted; }
    static void collect();

private:
    static void request();
    static size_t g_fresh;
    static size_t g_threshold;
    static bool g_wanted;
};
