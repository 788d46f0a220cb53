#include "driver/dap/LevelBuilder.h"

#include "debug/evaluation/DebugMarkerType.h"
#include "driver/dap/limits.h"
#include "driver/session/TextVariableView.h"
#include "expression/ExpressionType.h"

namespace {

bool isText(const QString& typeName)
{
    return typeName == QLatin1String("char") || typeName == QLatin1String("const char");
}

} // namespace

VariableListBuilder::pointerEvalMode LevelBuilder::getPointerEvalMode(const QString&, const QString& typeName,
                                                                      uint64_t address, unsigned&)
{
    if (opens())
        return PointerObject;
    m_next = Item();
    m_next.target = address;
    if (address == 0)
        return PointerValue;
    if (isText(typeName))
        return PointerString;
    m_next.shape = Pointer;
    return PointerValue;
}

VariableListBuilder::arrayEvalMode LevelBuilder::getArrayEvalMode(const QString&, const QString& typeName,
                                                                  unsigned& count)
{
    if (opens()) {
        count = std::min(count, m_arrayLimit);
        return ArrayElements;
    }
    m_next = Item();
    m_next.shape = Array;
    m_next.count = count;
    return isText(typeName) ? ArrayString : ArraySummary;
}

VariableListBuilder::structEvalMode LevelBuilder::getStructEvalMode(const QString&, const QString&)
{
    if (opens())
        return StructFields;
    m_next = Item();
    m_next.shape = Struct;
    return StructSummary;
}

void LevelBuilder::addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                                const QString& typeName, const MyMarker* marker)
{
    Item item = std::move(m_next);
    m_next = Item();
    if (m_items.size() == size_t(DapLimits::Children))
        return;
    item.name = name;
    item.path = path;
    item.type = typeName;
    QString text = TextVariableView::valueText(value, m_radix);
    bool unreadable = text == QLatin1String("???");
    // A summary is the address, which says nothing of the value.
    if (item.shape == Struct && !unreadable)
        text = QStringLiteral("{...}");
    else if (item.shape == Array && !unreadable && value.getType() == ExpressionType::String &&
             text.startsWith(QLatin1Char('@')))
        text = QStringLiteral("[...]");
    item.value = text;
    if (marker)
        item.place = std::make_shared<MyMarker>(*marker);
    m_items.push_back(std::move(item));
}

VariableListBuilder::Token LevelBuilder::beginObject(const QString&, const QString&, const ExpressionType&,
                                                     const QString&, const MyMarker*)
{
    return ++m_depth;
}

void LevelBuilder::endObject(Token)
{
    --m_depth;
}

VariableListBuilder::Token LevelBuilder::beginArray(const QString&, const QString&, const ExpressionType&,
                                                    const QString&, const MyMarker*)
{
    return ++m_depth;
}

void LevelBuilder::endArray(Token)
{
    --m_depth;
}

void LevelBuilder::clear()
{
    m_items.clear();
    m_next = Item();
    m_depth = 0;
}
