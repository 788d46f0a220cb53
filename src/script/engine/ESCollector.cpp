#include "script/engine/ESCollector.h"

#include "script/engine/ESContext.h"

#include <algorithm>

namespace {

// Not before so much was made since the last time.
constexpr size_t LeastGarbage = 4u << 20;
std::vector<ESContext*> g_contexts;

} // namespace

size_t ESCollector::g_fresh;
size_t ESCollector::g_threshold = LeastGarbage;
bool ESCollector::g_wanted;

void ESMarker::string(ESString* string)
{
    for (;;) {
        if (string->m_index || string->m_marked)
            return;
        string->m_marked = true;
        if (string->m_form == ESString::Rope) {
            m_strings.push_back(string->m_rope.right);
            string = string->m_rope.left;
        } else if (string->m_form == ESString::Slice) {
            string = string->m_slice.base;
        } else {
            return;
        }
    }
}

void ESMarker::object(ESObject* object)
{
    if (object->isCollectable() && ESHeap::mark(object))
        m_objects.push_back(object);
}

void ESMarker::valuesOf(ESObject* object)
{
    if (object->prototype)
        this->object(object->prototype);
    for (const ESProperty& slot : object->properties())
        value(slot.value());
    if (ESArray* array = object->array())
        for (uint32_t i = 0; i < array->count; ++i)
            value(array->elements[i]);
    if (object->kind() == ESObject::Boxed)
        value(object->internal());
}

void ESMarker::finish()
{
    while (!m_strings.empty() || !m_objects.empty()) {
        if (!m_strings.empty()) {
            ESString* next = m_strings.back();
            m_strings.pop_back();
            string(next);
        } else {
            ESObject* next = m_objects.back();
            m_objects.pop_back();
            valuesOf(next);
        }
    }
}

void ESCollector::enter(ESContext* context)
{
    g_contexts.push_back(context);
}

void ESCollector::leave(ESContext* context)
{
    std::erase(g_contexts, context);
    // Much of what was alive may be so no longer.
    g_threshold = LeastGarbage;
}

void ESCollector::request()
{
    g_wanted = true;
    for (ESContext* context : g_contexts)
        context->hurry();
}

void ESCollector::collect()
{
    ESMarker marker;
    for (ESContext* context : g_contexts)
        context->mark(marker);
    marker.finish();
    ESStringPool::sweep();
    size_t alive = ESStringPool::bytes();
    for (ESContext* context : g_contexts) {
        context->heap().sweep();
        alive += context->heap().bytes();
    }
    g_wanted = false;
    g_fresh = 0;
    // Garbage alone shall not reach the limit.
    size_t left = ESStringPool::limit() > alive ? ESStringPool::limit() - alive : 0;
    g_threshold = std::max(LeastGarbage, std::min(alive / 2, left / 2));
}
