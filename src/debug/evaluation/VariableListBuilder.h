// Receives the items of a variable display, one after the other: primitives, and arrays and objects around
// others. It also decides how far pointers, arrays and structures are followed.
//
// A path is an expression that names the item. Markers belong to the caller and are good for the time of the
// call; who wants to write an item later copies its marker. A value that is no place has none.
#pragma once

#include <QString>

#include <cstdint>

class ExpressionType;
class MyMarker;
struct ExpressionContext;

class VariableListBuilder {
public:
    enum pointerEvalMode { PointerValue = 0, PointerObject = 1, PointerArray = 2, PointerString = 3 };
    enum arrayEvalMode { ArrayNothing = 0, ArraySummary = 1, ArrayElements = 2, ArrayString = 3 };
    enum structEvalMode { StructSummary = 0, StructFields = 1 };
    using Token = int;

    virtual ~VariableListBuilder() = default;

    // Where the paths hold.
    virtual void setExpressionContext(const ExpressionContext& context) = 0;
    // What to show of a pointer to `typeName`; `count` gets the number of elements for PointerArray.
    virtual pointerEvalMode getPointerEvalMode(const QString& name, const QString& typeName, uint64_t address,
                                               unsigned& count) = 0;
    // What to show of an array of `typeName`; may lower the count.
    virtual arrayEvalMode getArrayEvalMode(const QString& name, const QString& typeName, unsigned& count);
    virtual structEvalMode getStructEvalMode(const QString& name, const QString& typeName);
    virtual void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                              const QString& typeName, const MyMarker* marker) = 0;
    // The value is that of the aggregate itself. The token comes back at the aggregate's end.
    virtual Token beginObject(const QString& name, const QString& path, const ExpressionType& value,
                              const QString& typeName, const MyMarker* marker) = 0;
    virtual void endObject(Token token) = 0;
    virtual Token beginArray(const QString& name, const QString& path, const ExpressionType& value,
                             const QString& typeName, const MyMarker* marker) = 0;
    virtual void endArray(Token token) = 0;
    virtual void clear() = 0;
};
