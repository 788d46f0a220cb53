// The types of a module: what a symbol, a field or a parameter is. Built once; afterwards only a
// pointer that was declared ahead gets its target, and a printed name is kept.
#pragma once

#include "support/HString.h"
#include "zoff/PoolContainers.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFTags.h"

class ZOFFField;
class ZOFFTypeName;

class ZOFFType : public ZOFFObject {
public:
    // The name from the file, else a printed name, made on first use and then kept. Types that mention
    // themselves end in "{...}" (structures) or "(...)" (functions).
    const HString* getName() const override;

    virtual ZOFFField* findField(const HString*) const { return nullptr; }
    virtual bool isSimple() const { return false; }
    virtual bool isFloat() const { return false; }
    virtual bool isArray() const { return false; }
    virtual bool isCountedArray() const { return false; }
    virtual bool isStruc() const { return false; }
    virtual bool isPtr() const { return false; }
    virtual bool isQualified() const { return false; }
    virtual bool isFunction() const { return false; }
    virtual bool isMemberFunction() const { return false; }
    virtual ZOFFType* getElementType() const { return nullptr; }

    int32_t size() const { return m_size; } // in bytes
    int depth() const { return m_depth; }   // of arrays and qualifiers in one another, from 1

protected:
    explicit ZOFFType(int32_t size, int depth = 1);
    // Appends the printed name without regard to a name from the file.
    virtual void printName(ZOFFTypeName& out) const = 0;

private:
    friend class ZOFFTypeName;
    uint16_t m_depth;
    int32_t m_size;
    mutable bool m_visiting = false; // while its name is being printed
};

// A number. The kind is CHAR, INT or UNSIGNED; only INT is signed.
class ZOFFSimpleType : public ZOFFType {
public:
    ZOFFSimpleType(ZOFFTag kind, int32_t size) : ZOFFType(size), m_simpleKind(kind) {}
    ZOFFTag simpleKind() const { return m_simpleKind; }
    bool isSimple() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFTag m_simpleKind;
};

class ZOFFFloatType : public ZOFFType {
public:
    explicit ZOFFFloatType(int32_t size) : ZOFFType(size) {}
    bool isFloat() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;
};

class ZOFFUntypedType : public ZOFFType {
public:
    explicit ZOFFUntypedType(int32_t size) : ZOFFType(size) {}

protected:
    void printName(ZOFFTypeName& out) const override;
};

class ZOFFArrayType : public ZOFFType {
public:
    // The size is that of all elements. Throws HException when it is beyond 31 bits, when the count is
    // negative, and when arrays are nested too deeply.
    ZOFFArrayType(ZOFFType* element, int64_t count);
    int32_t count() const { return m_count; }
    bool isArray() const override { return true; }
    ZOFFType* getElementType() const override { return m_element; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFType* m_element;
    int32_t m_count;
};

// An array whose number of elements stands in memory in front of it. The size is that of one element.
class ZOFFCountedArrayType : public ZOFFType {
public:
    ZOFFCountedArrayType(ZOFFType* counter, ZOFFType* element, int32_t count);
    ZOFFType* counter() const { return m_counter; }
    int32_t count() const { return m_count; }
    bool isCountedArray() const override { return true; }
    ZOFFType* getElementType() const override { return m_element; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFType* m_counter;
    int32_t m_count;
    ZOFFType* m_element;
};

// A pointer; it has no target while it is only declared. Its value is a byte address (BytePtr) or the
// address of a word (WordPtr).
class ZOFFPtrType : public ZOFFType {
public:
    explicit ZOFFPtrType(int32_t size) : ZOFFType(size) {}
    ZOFFType* target() const { return m_target; }
    // Throws HException when a chain of pointers would come back to itself or grow too long. Returns how
    // many pointers it walked to find out.
    int setTarget(ZOFFType* target);
    ZOFFTag representation() const { return m_representation; }
    void setRepresentation(ZOFFTag tag) { m_representation = tag; }
    bool isPtr() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFTag m_representation = ZOFFTag::BytePtr;
    ZOFFType* m_target = nullptr;
};

// A type in a memory space of its own: DataSpace, CodeSpace, EepromSpace or PeripheralSpace. Size and
// name are those of the base type.
class ZOFFQualifiedType : public ZOFFType {
public:
    ZOFFQualifiedType(ZOFFType* base, ZOFFTag qualifier);
    const HString* getName() const override { return m_name ? m_name : m_base->getName(); }
    ZOFFType* baseType() const { return m_base; }
    ZOFFTag qualifier() const { return m_qualifier; }
    bool isQualified() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFTag m_qualifier;
    ZOFFType* m_base;
};

class ZOFFStrucType : public ZOFFType {
public:
    explicit ZOFFStrucType(int32_t size) : ZOFFType(size) {}
    const PoolList<ZOFFField*>& fields() const { return m_fields; } // in file order
    void addField(ZOFFField* field) { m_fields.push_back(field); }
    // The first field of that interned name; null when there is none.
    ZOFFField* findField(const HString* name) const override;
    bool isStruc() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    PoolList<ZOFFField*> m_fields;
};

class ZOFFFunctionType : public ZOFFType {
public:
    // The frame size is in bytes, below the saved registers; bit n (2 to 15) of the mask says that the
    // function saves register n on entry. The first number is kept as the file has it.
    ZOFFFunctionType(int32_t a, int32_t frameSize, int32_t savedRegisters)
        : ZOFFType(0), m_a(a), m_frameSize(frameSize), m_savedRegisters(savedRegisters)
    {
    }
    int32_t a() const { return m_a; }
    int32_t frameSize() const { return m_frameSize; }
    int32_t savedRegisters() const { return m_savedRegisters; }
    const PoolList<ZOFFSymbol*>& inParameters() const { return m_in; }
    const PoolList<ZOFFSymbol*>& outParameters() const { return m_out; }
    void addInParameter(ZOFFSymbol* symbol) { m_in.push_back(symbol); }
    void addOutParameter(ZOFFSymbol* symbol) { m_out.push_back(symbol); }
    bool isFunction() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    int32_t m_a;
    int32_t m_frameSize;
    int32_t m_savedRegisters;
    PoolList<ZOFFSymbol*> m_in;
    PoolList<ZOFFSymbol*> m_out;
};

class ZOFFMemberFunctionType : public ZOFFFunctionType {
public:
    explicit ZOFFMemberFunctionType(ZOFFType* classType) : ZOFFFunctionType(0, 0, 0), m_class(classType) {}
    ZOFFType* classType() const { return m_class; }
    bool isMemberFunction() const override { return true; }

protected:
    void printName(ZOFFTypeName& out) const override;

private:
    ZOFFType* m_class;
};

// A field of a structure; its type and name are those of the object.
class ZOFFField : public ZOFFObject {
public:
    virtual bool isStatic() const = 0;

protected:
    ZOFFField(const HString* name, ZOFFType* type) : ZOFFObject(ZOFFKind::Field, name) { m_type = type; }
};

// A field that lies elsewhere, at a fixed place.
class ZOFFStaticField : public ZOFFField {
public:
    ZOFFStaticField(const HString* name, ZOFFExpr* expr, ZOFFType* type) : ZOFFField(name, type), m_expr(expr)
    {
    }
    ZOFFExpr* expr() const { return m_expr; }
    bool isStatic() const override { return true; }

private:
    ZOFFExpr* m_expr;
};

// A field inside the structure: offset and size in bits, from its start.
class ZOFFDynamicField : public ZOFFField {
public:
    ZOFFDynamicField(const HString* name, int32_t bitOffset, int32_t bitSize, ZOFFType* type)
        : ZOFFField(name, type), m_bitOffset(bitOffset), m_bitSize(bitSize)
    {
    }
    int32_t bitOffset() const { return m_bitOffset; }
    int32_t bitSize() const { return m_bitSize; }
    bool isStatic() const override { return false; }

private:
    int32_t m_bitOffset;
    int32_t m_bitSize;
};
