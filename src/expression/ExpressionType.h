// The value of an expression: a number, a text, or a marker, which refers to a place.
//
// A number keeps all 64 bits of whatever computed it; its size takes effect when it is read. An operator's
// result has the type and the size of its left operand, there is no promotion. Copies of a marker share it.
#pragma once

#include "expression/ExpressionOperator.h"
#include "expression/MarkerType.h"

#include <QString>

#include <cstdint>
#include <memory>

class ExpressionType {
public:
    enum Type { Boolean = 0, Signed = 1, Unsigned = 2, String = 3, Marker = 4, Float = 5, None = 6 };

    ExpressionType() = default; // None, of size 2
    explicit ExpressionType(bool value);
    // Sizes in bytes, and in bits: 0 bits stands for the whole of the bytes, others are the width of a
    // bit-field in hexadecimal and binary text.
    ExpressionType(long long value, unsigned sizeInBytes, unsigned sizeInBits = 0);
    ExpressionType(unsigned long long value, unsigned sizeInBytes, unsigned sizeInBits = 0);
    ExpressionType(double value, unsigned sizeInBytes);
    ExpressionType(const char* text, unsigned sizeInBytes);
    ExpressionType(const QString& text, unsigned sizeInBytes);
    explicit ExpressionType(std::unique_ptr<MarkerType> marker);
    // A value of the type and sizes of `like`, read from text; a text that is no boolean is false. With a
    // marker the text is given to its setValue().
    ExpressionType(const ExpressionType& like, const QString& text, int radix);

    Type getType() const { return m_type; }
    // To float, a boolean's or integer's 64 bits are converted as an unsigned number. Any other change
    // leaves the value as it is.
    void setType(Type type);
    bool getBoolean() const { return lowByte() != 0; }
    // Integers by their size; a float cut toward zero, or to the nearest that 64 bits hold; the first byte
    // of a boolean; otherwise 0.
    int64_t getInteger() const;
    // The same, but of a float the bits of its size, which are 0 for sizes other than 4 and 8.
    uint64_t getUInteger() const;
    double getFloating() const; // 0 for what is no number
    const QString& getString() const { return m_text; }
    MarkerType* getMarker() const { return m_marker.get(); } // null for what is none
    unsigned getSizeInBytes() const { return m_sizeInBytes; }
    void setSizeInBytes(int size) { m_sizeInBytes = unsigned(size); }
    unsigned getSizeInBits() const { return m_sizeInBits; }
    bool isNumberType() const { return m_type == Signed || m_type == Unsigned || m_type == Float; }

    // Replaces a marker by what stands at its place.
    void evaluate();
    bool equiv(const ExpressionType& other) const;

    // Each operator evaluates both operands first, the left one before the right one. Throw
    // ParserException.
    static ExpressionType apply(ExpressionOperator op, ExpressionType& left, ExpressionType& right);
    ExpressionType negate();
    ExpressionType bitNot();
    ExpressionType logicalNot();
    ExpressionType abs(); // of the low 32 bits

    // The C name of a number's type; "unknown" for sizes that have none.
    QString TypeToString(bool byteWord) const;
    // The printed value: numbers in a radix, with leading zeros and a prefix in radix 2, 8 and 16; a
    // printf format for floats in radix 10, "%g" when it is null.
    QString toStr(int radix, bool unsignedView, bool asChar, const char* format) const;

private:
    uint8_t lowByte() const { return uint8_t(m_bits); }
    ExpressionType like(uint64_t bits) const;
    ExpressionType arithmetic(ExpressionOperator op, const ExpressionType& right) const;
    ExpressionType shift(ExpressionOperator op, const ExpressionType& right) const;
    bool compare(ExpressionOperator op, const ExpressionType& right) const;
    uint64_t zeroExtended() const;

    Type m_type = None;
    uint64_t m_bits = 0; // of the boolean, the integer or the double
    unsigned m_sizeInBytes = 2;
    unsigned m_sizeInBits = 0;
    QString m_text;
    std::shared_ptr<MarkerType> m_marker;
};
