// Types as a cast writes them, before anybody has looked up what they are in a program.
#pragma once

#include <QString>

#include <cstdint>
#include <vector>

class Expression;

class BaseType {
public:
    virtual ~BaseType() = default;
    virtual QString dump() const = 0; // for tracing
    // Parts that somebody who looks the type up visits, with the nodes of its sizes.
    uint64_t cost() const { return m_cost; }

protected:
    explicit BaseType(uint64_t partsCost = 0) : m_cost(partsCost + 1) {}

private:
    uint64_t m_cost;
};

class SimpleType : public BaseType {
public:
    enum Kind { Char = 0, Short = 1, Int = 2, Long = 3, LongLong = 4, Float = 5, Double = 6 };
    SimpleType(Kind kind, bool isUnsigned) : m_kind(kind), m_unsigned(isUnsigned) {}
    Kind kind() const { return m_kind; }
    bool isUnsigned() const { return m_unsigned; }
    QString dump() const override;

private:
    Kind m_kind;
    bool m_unsigned;
};

// A name that isUserTypeName() knows.
class UserType : public BaseType {
public:
    explicit UserType(const QString& name) : m_name(name) {}
    const QString& name() const { return m_name; }
    QString dump() const override { return m_name; }

private:
    QString m_name;
};

class PointerType : public BaseType {
public:
    explicit PointerType(const BaseType* target) : BaseType(target->cost()), m_target(target) {}
    const BaseType* target() const { return m_target; }
    QString dump() const override { return m_target->dump() + u'*'; }

private:
    const BaseType* m_target;
};

class ArrayType : public BaseType {
public:
    ArrayType(const BaseType* element, const Expression* size);
    const BaseType* element() const { return m_element; }
    const Expression* size() const { return m_size; } // the number of elements
    QString dump() const override;

private:
    const BaseType* m_element;
    const Expression* m_size;
};

class StructType : public BaseType {
public:
    struct Field {
        const BaseType* type;
        QString name;    // empty for padding
        int64_t bitSize; // -1 when none is given
    };
    explicit StructType(std::vector<Field> fields) : BaseType(fields.size()), m_fields(std::move(fields)) {}
    const std::vector<Field>& fields() const { return m_fields; }
    QString dump() const override;

private:
    std::vector<Field> m_fields;
};

// A word of `size` bytes with fields at fixed bits.
class RegisterType : public BaseType {
public:
    struct Field {
        QString name;
        int64_t bitOffset;
        int64_t bitSize;
    };
    RegisterType(int64_t size, std::vector<Field> fields)
        : BaseType(fields.size()), m_size(size), m_fields(std::move(fields))
    {
    }
    int64_t size() const { return m_size; }
    const std::vector<Field>& fields() const { return m_fields; }
    QString dump() const override;

private:
    int64_t m_size;
    std::vector<Field> m_fields;
};
