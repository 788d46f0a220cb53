// Builds the text of a variable display: "name=value", "[a, b]", "{x=1, y=2}".
#pragma once

#include "debug/evaluation/VariableListBuilder.h"

#include <QByteArray>
#include <QString>

#include <vector>

class TextVariableView : public VariableListBuilder {
public:
    // Radix 11 is unsigned decimal, and radix 1 a character.
    enum : int { CharacterRadix = 1, UnsignedRadix = 11 };

    // A printf format for floats in radix 10. Without `expand` an aggregate is "[...]" or "{...}"; with
    // `aggregateValue` its own value stands in front of the bracket. In a multi-line view each item at the
    // top has a line of its own.
    TextVariableView(int radix, unsigned arrayLimit, bool showType, bool showName, bool showValue,
                     bool followStrings, const QByteArray& floatFormat, bool expand, bool aggregateValue,
                     bool multiLine);

    void setExpressionContext(const ExpressionContext&) override {} // nothing is written later
    pointerEvalMode getPointerEvalMode(const QString& name, const QString& typeName, uint64_t address,
                                       unsigned& count) override;
    arrayEvalMode getArrayEvalMode(const QString& name, const QString& typeName, unsigned& count) override;
    void addPrimitive(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    Token beginObject(const QString& name, const QString& path, const ExpressionType& value,
                      const QString& typeName, const MyMarker* marker) override;
    void endObject(Token token) override;
    Token beginArray(const QString& name, const QString& path, const ExpressionType& value,
                     const QString& typeName, const MyMarker* marker) override;
    void endArray(Token token) override;
    void clear() override;

    const QString& text() const { return m_text; }

    // The text of one value. An empty float format is "%g".
    static QString valueText(const ExpressionType& value, int radix, const QByteArray& floatFormat = {});

private:
    struct Aggregate {
        bool cut;      // by the array limit
        bool showName; // in force around it
        bool first;    // no item stands in it yet
    };

    bool hidden() const { return !m_expand && !m_open.empty(); }
    void beginItem(const QString& name, const QString& typeName);
    Token begin(const QString& name, const ExpressionType& value, const QString& typeName, bool array);
    void end(char16_t bracket);

    int m_radix;
    unsigned m_arrayLimit;
    bool m_showType;
    bool m_showName;
    bool m_showValue;
    bool m_followStrings;
    QByteArray m_floatFormat;
    bool m_expand;
    bool m_aggregateValue;
    bool m_multiLine;
    bool m_cut = false; // the array that begins next
    std::vector<Aggregate> m_open;
    QString m_text;
};
