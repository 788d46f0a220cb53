// Collects one level of a variable display: the items themselves, or with `open` the children of the one item
// that is displayed. What is below is told as a shape and a count, and not read.
#pragma once

#include "debug/evaluation/VariableListBuilder.h"

#include <QString>

#include <memory>
#include <vector>

class MyMarker;

class LevelBuilder : public VariableListBuilder {
public:
    enum Shape { Plain, Struct, Array, Pointer };
    struct Item {
        QString name;
        QString path;   // an expression for it
        QString inside; // one that has its children, where the path has not
        QString type;
        QString value;
        Shape shape = Plain;
        unsigned count = 0;              // elements of an array
        uint64_t target = 0;             // of a pointer, also of one that is shown as a text
        std::shared_ptr<MyMarker> place; // null for what is none
    };

    // Of an array that is opened no more than so many elements are read.
    LevelBuilder(bool open, int radix, unsigned arrayLimit = 0)
        : m_open(open), m_radix(radix), m_arrayLimit(arrayLimit)
    {
    }
    const std::vector<Item>& items() const { return m_items; }

    void setExpressionContext(const ExpressionContext&) override {}
    pointerEvalMode getPointerEvalMode(const QString& name, const QString& typeName, uint64_t address,
                                       unsigned& count) override;
    arrayEvalMode getArrayEvalMode(const QString& name, const QString& typeName, unsigned& count) override;
    structEvalMode getStructEvalMode(const QString& name, const QString& typeName) override;
    void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    Token beginObject(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    void endObject(Token token) override;
    Token beginArray(const QString& name, const QString& path, const ExpressionType& value,
                     const QString& typeName, const MyMarker* marker) override;
    void endArray(Token token) override;
    void clear() override;

private:
    bool opens() const { return m_open && m_depth == 0; }

    bool m_open;
    int m_radix;
    unsigned m_arrayLimit;
    int m_depth = 0;
    Item m_next; // shape, count and target of the item that comes next
    std::vector<Item> m_items;
};
