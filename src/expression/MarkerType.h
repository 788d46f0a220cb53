// A value's place in whatever an expression is about: the reference half of ExpressionType.
#pragma once

class ExpressionType;
class QString;

class MarkerType {
public:
    virtual ~MarkerType() = default;
    virtual QString getValueAsString() = 0; // the place as text
    virtual ExpressionType getValue() = 0;  // what stands there
    virtual bool equiv(const MarkerType* other) const = 0;
    virtual bool lt(const MarkerType* other) const = 0;
    virtual void setValue(const QString& text) = 0;
};
