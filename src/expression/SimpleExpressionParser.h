// Expressions of plain numbers, without a program.
#pragma once

#include "expression/BaseType.h"
#include "expression/ExpressionParser.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"

class SimpleExpressionParser : public ExpressionParser {
public:
    static SimpleExpressionParser& instance();

    // The value of a text that somebody entered as a number. `ok` is false, and the value 0, for a text that
    // is no number expression from its beginning to its end.
    uint64_t getUInteger(const QString& text, bool& ok);

    std::unique_ptr<MarkerType> getScopedIdentifier(const QStringList& names) override;
    std::unique_ptr<MarkerType> getIdentifier(const QString& name) override;
    std::unique_ptr<MarkerType> getRegister(const QString& name) override;
    bool isUserTypeName(const QString&) override { return false; }
    ExpressionType cast(const BaseType* type, const ExpressionType& value) override;
    void getDereference(MarkerType* marker, int64_t index) override;
    void getDereference(MarkerType* marker, const QString& fieldName) override;
    void getDereference(MarkerType* marker, const QStringList& names) override;
    ExpressionType assign(MarkerType* marker, const ExpressionType& value) override;
    ExpressionType getValue(MarkerType* marker) override;

private:
    SimpleExpressionParser();
};
