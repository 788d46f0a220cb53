// A parser over named numbers, arrays of them and one record, enough to evaluate every kind of node.
#pragma once

#include "expression/BaseType.h"
#include "expression/CStyleLexer.h"
#include "expression/ExpressionParser.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"

#include <QMap>

class VariablesParser : public ExpressionParser {
public:
    VariablesParser() : ExpressionParser(std::make_unique<CStyleLexer>()) {}

    // The place of variable `name`; fields and elements make longer names.
    class Variable : public MarkerType {
    public:
        Variable(VariablesParser& owner, const QString& name) : name(name), m_owner(owner) {}
        QString getValueAsString() override { return u'<' + name + u'>'; }
        ExpressionType getValue() override { return m_owner.getValue(this); }
        bool equiv(const MarkerType* other) const override
        {
            return name == static_cast<const Variable*>(other)->name;
        }
        bool lt(const MarkerType* other) const override
        {
            return name < static_cast<const Variable*>(other)->name;
        }
        void setValue(const QString& text) override { name = text; }
        QString name;

    private:
        VariablesParser& m_owner;
    };

    std::unique_ptr<MarkerType> getScopedIdentifier(const QStringList& names) override
    {
        return getIdentifier(QStringLiteral("::") + names.join(QLatin1String("::")));
    }
    std::unique_ptr<MarkerType> getIdentifier(const QString& name) override
    {
        if (!values.contains(name))
            throw ParserException(name + QLatin1String(" symbol not found"));
        return std::make_unique<Variable>(*this, name);
    }
    std::unique_ptr<MarkerType> getRegister(const QString& name) override
    {
        return getIdentifier(u'@' + name);
    }
    bool isUserTypeName(const QString& name) override { return name == u"word" || name == u"struct pair"; }
    ExpressionType cast(const BaseType* type, const ExpressionType& value) override
    {
        casts += type->dump();
        ExpressionType content = value;
        content.evaluate();
        return content;
    }
    void getDereference(MarkerType* marker, int64_t index) override
    {
        static_cast<Variable*>(marker)->name += u'[' + QString::number(index) + u']';
    }
    void getDereference(MarkerType* marker, const QString& field) override
    {
        static_cast<Variable*>(marker)->name += u'.' + field;
    }
    void getDereference(MarkerType* marker, const QStringList& names) override
    {
        getDereference(marker, names.join(QLatin1String("::")));
    }
    std::unique_ptr<MarkerType> getAddressof(MarkerType* marker) override
    {
        return std::make_unique<Variable>(*this, u'&' + static_cast<Variable*>(marker)->name);
    }
    ExpressionType getSizeof(MarkerType*) override { return ExpressionType(8LL, 4); }
    ExpressionType assign(MarkerType* marker, const ExpressionType& value) override
    {
        ++assignments;
        return values[static_cast<Variable*>(marker)->name] = value;
    }
    ExpressionType getValue(MarkerType* marker) override
    {
        return values.value(static_cast<Variable*>(marker)->name, ExpressionType(0LL, 8));
    }

    QMap<QString, ExpressionType> values;
    QStringList casts;
    int assignments = 0;
};
