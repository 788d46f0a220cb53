// Builds one script value of a variable display: a primitive, an array, or an object with a property for each
// item. The objects belong to the context.
#pragma once

#include "debug/evaluation/VariableListBuilder.h"
#include "script/engine/ESValue.h"

#include <vector>

class ESContext;

class JavaScriptVariableView : public VariableListBuilder {
public:
    // To be called first; the context is not owned.
    void init(ESContext* context);
    // Undefined when nothing was shown.
    ESValue getESValue() const;

    void setExpressionContext(const ExpressionContext&) override {} // nothing is written later
    pointerEvalMode getPointerEvalMode(const QString& name, const QString& typeName, uint64_t address,
                                       unsigned& count) override;
    arrayEvalMode getArrayEvalMode(const QString& name, const QString& typeName, unsigned& count) override;
    void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    Token beginObject(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    void endObject(Token token) override { end(token); }
    Token beginArray(const QString& name, const QString& path, const ExpressionType& value,
                     const QString& typeName, const MyMarker* marker) override;
    void endArray(Token token) override { end(token); }
    void clear() override;

private:
    struct Entry {
        unsigned count; // of the items in it
        ESValue value;
    };

    void add(const QString& name, const ESValue& value);
    Token begin(const QString& name, ESValue object);
    void end(Token token);

    ESContext* m_context = nullptr;
    std::vector<Entry> m_stack;
};
