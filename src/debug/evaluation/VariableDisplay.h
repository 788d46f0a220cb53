// Walks from a marker along its type and hands each item to a builder. One object makes one display, whose
// nesting and number of items are bounded: where it is cut an item says "...", or the rest is missing.
#pragma once

#include "debug/evaluation/VariableListBuilder.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"

#include <QHash>

class ZOFFPtrType;
class ZOFFStrucType;

class VariableDisplay {
public:
    VariableDisplay(ZOFFExpressionEvaluator& evaluator, VariableListBuilder& builder);

    void formatVariable(const QString& name, const QString& path, const MyMarker& marker);

private:
    // What is shown: a type at a position of the top block, whose bytes are those of `base`.
    struct Item {
        QString name;
        QString path;
        ZOFFType* type;
        const MyMarker& base;
        uint32_t position;
    };

    void formatType(const Item& item);
    void formatArray(const Item& item);
    void formatPtr(const Item& item);
    void formatTarget(const Item& item, const ZOFFPtrType& pointer, uint64_t address);
    void formatElements(const Item& item, uint64_t address, unsigned count);
    void formatStruct(const Item& item, const char* selector);
    void formatText(const Item& item, DebugMarkerType::markerType space, uint32_t address, unsigned maximum);
    void formatBits(const QString& name, const QString& path, const MyMarker& marker);
    void add(const QString& name, const QString& path, const ExpressionType& value, const QString& typeName,
             const MyMarker& marker);
    void add(const Item& item, const ExpressionType& value);

    MyMarker getAddress(const Item& item) const;
    ExpressionType addressSizeString(const MyMarker& marker) const;
    void seek(const MyMarker& base, uint32_t position);
    void announce(uint32_t position, uint64_t size);
    const QString& nameOf(const ZOFFType* type);
    bool isFull() const { return m_items >= m_maximumItems; }

    ZOFFExpressionEvaluator& m_evaluator;
    VariableListBuilder& m_builder;
    QHash<const ZOFFType*, QString> m_names;
    int m_nesting = 0;
    int m_items = 0;
    int m_maximumItems;
};
