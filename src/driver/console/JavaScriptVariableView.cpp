#include "driver/console/JavaScriptVariableView.h"

#include "debug/evaluation/DebugMarkerType.h"
#include "expression/ExpressionType.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"

namespace {

bool isText(const QString& typeName)
{
    return typeName == QLatin1String("char") || typeName == QLatin1String("const char");
}

ESValue scriptValue(const ExpressionType& value)
{
    switch (value.getType()) {
    case ExpressionType::Boolean: return ESValue::boolean(value.getBoolean());
    case ExpressionType::Signed:
    case ExpressionType::Unsigned:
    case ExpressionType::Float: return ESValue(value.getFloating());
    case ExpressionType::String: return ESValue(ESStringPool::intern(value.getString()));
    default: return g_undefined;
    }
}

} // namespace

void JavaScriptVariableView::init(ESContext* context)
{
    m_context = context;
    m_stack.clear();
}

void JavaScriptVariableView::clear()
{
    m_stack.clear();
}

ESValue JavaScriptVariableView::getESValue() const
{
    return m_stack.empty() ? g_undefined : m_stack.back().value;
}

VariableListBuilder::pointerEvalMode JavaScriptVariableView::getPointerEvalMode(const QString&,
                                                                                const QString& typeName,
                                                                                uint64_t address, unsigned&)
{
    return address != 0 && isText(typeName) ? PointerString : PointerValue;
}

VariableListBuilder::arrayEvalMode
JavaScriptVariableView::getArrayEvalMode(const QString&, const QString& typeName, unsigned&)
{
    return isText(typeName) ? ArrayString : ArrayElements;
}

// Into the object on top, which there is.
void JavaScriptVariableView::add(const QString& name, const ESValue& value)
{
    Entry& top = m_stack.back();
    if (!top.value.isObject()) // a lone value; nothing is shown behind one
        return;
    ESObject* object = top.value.object();
    ESString* key =
        m_context->isarray(top.value) ? ESStringPool::number(top.count) : ESStringPool::intern(name);
    m_context->put(object, key, value);
    ++top.count;
}

void JavaScriptVariableView::addPrimitive(const QString& name, const QString&, const ExpressionType& value,
                                          const QString&, const MyMarker*)
{
    if (m_stack.empty())
        m_stack.push_back({0, scriptValue(value)});
    else
        add(name, scriptValue(value));
}

VariableListBuilder::Token JavaScriptVariableView::begin(const QString& name, ESValue object)
{
    if (!m_stack.empty())
        add(name, object);
    m_stack.push_back({0, object});
    return Token(m_stack.size());
}

VariableListBuilder::Token JavaScriptVariableView::beginObject(const QString& name, const QString&,
                                                               const ExpressionType&, const QString&,
                                                               const MyMarker*)
{
    return begin(name, ESValue(m_context->mkplain()));
}

VariableListBuilder::Token JavaScriptVariableView::beginArray(const QString& name, const QString&,
                                                              const ExpressionType&, const QString&,
                                                              const MyMarker*)
{
    return begin(name, ESValue(m_context->newArray(0, nullptr)));
}

void JavaScriptVariableView::end(Token)
{
    Entry& top = m_stack.back();
    m_context->varinstant(top.value.object(), ESProperty::DontEnum | ESProperty::DontDelete,
                          ESStringPool::intern("length"), ESValue(double(top.count)));
    if (m_stack.size() > 1)
        m_stack.pop_back();
}
