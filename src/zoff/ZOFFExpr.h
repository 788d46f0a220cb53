// Expressions: operands of instructions and values of symbols. Trees of constants, registers, symbols,
// markers and operators; parts may be shared, and nothing changes after it is made.
#pragma once

#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFTags.h"

#include <string>

class ZOFFMarker;
class ZOFFSection;
class ZOFFSymbol;

// What an expression comes to.
struct ZOFFEvaluation {
    bool unresolved = false; // the value must not be used; the message says why
    int64_t value = 0;
    int32_t codeletIndex = -1; // of the symbol that was evaluated
    bool patchable = false;
    bool patched = false;
    std::string message;
    ZOFFSection* section = nullptr; // that the value is relative to; null for a pure number

    static ZOFFEvaluation failure(std::string message);
};

class ZOFFExpr : public ZOFFObject {
public:
    virtual bool isConstant() const { return false; }
    virtual bool equals(const ZOFFExpr* other) const = 0;
    // Never throws for what is in a file: a division by zero, a circle of symbols, an undefined symbol
    // and an expression beyond the limits are unresolved.
    virtual ZOFFEvaluation evaluate() const = 0;
    // Appends the text of the expression.
    virtual void print(std::string& out) const = 0;
    std::string printString() const;

    int depth() const { return m_depth; } // 1 for an expression without parts

protected:
    explicit ZOFFExpr(ZOFFKind kind) : ZOFFObject(kind) {}
    uint16_t m_depth = 1;
};

class ZOFFConstExpr : public ZOFFExpr {
public:
    explicit ZOFFConstExpr(int64_t value) : ZOFFExpr(ZOFFKind::ConstExpr), m_value(value) {}
    int64_t value() const { return m_value; }
    bool isConstant() const override { return true; }
    bool equals(const ZOFFExpr* other) const override;
    ZOFFEvaluation evaluate() const override;
    void print(std::string& out) const override; // decimal

private:
    int64_t m_value;
};

class ZOFFRegisterExpr : public ZOFFExpr {
public:
    explicit ZOFFRegisterExpr(int32_t number) : ZOFFExpr(ZOFFKind::RegisterExpr), m_register(number) {}
    int32_t registerNumber() const { return m_register; }
    // The processor's name for a register.
    static std::string getRegisterName(int32_t number);
    bool equals(const ZOFFExpr* other) const override;
    ZOFFEvaluation evaluate() const override; // unresolved, without a message
    void print(std::string& out) const override;

private:
    int32_t m_register;
};

class ZOFFSymbolExpr : public ZOFFExpr {
public:
    explicit ZOFFSymbolExpr(ZOFFSymbol* symbol) : ZOFFExpr(ZOFFKind::SymbolExpr), m_symbol(symbol) {}
    ZOFFSymbol* symbol() const { return m_symbol; }
    bool equals(const ZOFFExpr* other) const override;
    ZOFFEvaluation evaluate() const override;
    void print(std::string& out) const override;

private:
    ZOFFSymbol* m_symbol;
    mutable bool m_visiting = false; // guards against a symbol that is defined through itself
};

class ZOFFMarkerExpr : public ZOFFExpr {
public:
    explicit ZOFFMarkerExpr(ZOFFMarker* marker) : ZOFFExpr(ZOFFKind::MarkerExpr), m_marker(marker) {}
    ZOFFMarker* marker() const { return m_marker; }
    bool equals(const ZOFFExpr* other) const override;
    // The marker's pc; unresolved while the marker is not placed.
    ZOFFEvaluation evaluate() const override;
    void print(std::string& out) const override;

private:
    ZOFFMarker* m_marker;
};

class ZOFFBinaryExpr : public ZOFFExpr {
public:
    // The only way to build one. Constants are folded where the result is resolved, also those of
    // nested additions, so the result may be any kind of expression. Throws HException for an
    // expression that is nested too deeply or too large.
    static ZOFFExpr* make(ZOFFTag op, ZOFFExpr* left, ZOFFExpr* right);

    // Signed arithmetic wraps. Shifts by 64 or more, or by a negative count, shift everything out.
    static ZOFFEvaluation combine(ZOFFTag op, ZOFFEvaluation left, const ZOFFEvaluation& right);
    // The operator with its blanks, " + ".
    static const char* operatorText(ZOFFTag op);

    ZOFFTag op() const { return m_op; }
    ZOFFExpr* left() const { return m_left; }
    ZOFFExpr* right() const { return m_right; }
    uint32_t nodes() const { return m_nodes; } // of the whole tree, shared parts counted each time
    bool equals(const ZOFFExpr* other) const override;
    ZOFFEvaluation evaluate() const override;
    // Operands that are operators themselves stand in parentheses.
    void print(std::string& out) const override;

private:
    ZOFFBinaryExpr(ZOFFTag op, ZOFFExpr* left, ZOFFExpr* right);

    ZOFFTag m_op;
    uint32_t m_nodes;
    ZOFFExpr* m_left;
    ZOFFExpr* m_right;
};

// An expression with a type of its own; the value is that of the inner expression.
class ZOFFTypeExpr : public ZOFFExpr {
public:
    // Throws HException for an expression that is nested too deeply.
    ZOFFTypeExpr(ZOFFType* type, ZOFFExpr* inner);
    ZOFFExpr* inner() const { return m_inner; }
    bool isConstant() const override { return m_inner->isConstant(); }
    bool equals(const ZOFFExpr* other) const override;
    ZOFFEvaluation evaluate() const override;
    void print(std::string& out) const override;

private:
    ZOFFExpr* m_inner;
};
