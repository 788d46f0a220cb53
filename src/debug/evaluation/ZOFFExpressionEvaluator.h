// Expressions about a program whose symbols and types are those of a ZOFF module: what a name stands for,
// what stands at a marker, fields and elements, casts, and the displays of variables.
//
// What can't be evaluated throws ParserException; what the target fails with passes through. A display shows
// "???" for an item that can't be read, and goes on.
#pragma once

#include "debug/evaluation/DebugExpressionParser.h"
#include "debug/evaluation/DebugMarkerType.h"
#include "expression/BaseType.h"
#include "expression/Expression.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"
#include "support/Endian.h"
#include "support/Pool.h"

class VariableDisplay;
class VariableListBuilder;
class ZOFFExpr;
class ZOFFSymbol;
class ZOFFType;

class ZOFFExpressionEvaluator : public DebugExpressionParser {
public:
    using DebugExpressionParser::getRegister;

    // The word size is in bytes; word pointers count in it, and byte pointers and "int" have it.
    explicit ZOFFExpressionEvaluator(unsigned wordSize, Endian::EndianType endian = Endian::Little);
    ~ZOFFExpressionEvaluator() override;

    // The program, as the derived class knows it. Null and -1 stand for what there is not.
    virtual ZOFFSymbol* getSymbol(const char* name) const = 0;
    virtual ZOFFType* getNamedType(const char* name) const = 0;
    virtual uint32_t getSPValue(int registerNumber) = 0;
    virtual int getSPAdjustment() const = 0; // what the stack pointer is off by
    virtual int registerDereference(int base, int64_t index) = 0;

    // To be called before the text of an expression is parsed: forgets the last symbol and side effects.
    void beginEvaluation();
    // The symbol that was last looked up by name; null when none was.
    ZOFFSymbol* lastSymbol() const { return m_lastSymbol; }
    // Whether something was assigned.
    bool hadSideEffect() const { return m_sideEffect; }

    // Evaluates an expression and shows its value under a name; an empty expression shows nothing.
    void formatExpression(const QString& expression, const QString& name, VariableListBuilder* builder);
    // Assigns a value to what the expression names; nothing happens when that is no place.
    void assignExpression(const QString& expression, const ExpressionType& value);
    // Shows a symbol's value; nothing when it lies nowhere.
    void formatSymbol(ZOFFSymbol* symbol, VariableListBuilder* builder);
    void formatVariable(const QString& name, const QString& path, const MyMarker& marker,
                        VariableListBuilder* builder);

    // A marker for a symbol's value: a register, a local variable, memory, or, unless addressOnly, a
    // constant. Null when there is none.
    std::unique_ptr<MyMarker> getExpressionType(ZOFFType* type, ZOFFExpr* expr, bool addressOnly);
    // A null type is the default type, and a size of 0 that of the type.
    std::unique_ptr<MyMarker> mkExpressionType(ZOFFType* type, uint64_t address,
                                               DebugMarkerType::markerType kind, int32_t offset = 0,
                                               uint32_t size = 0, int32_t bitOffset = 0, int32_t bitSize = 0);

    std::unique_ptr<MarkerType> getScopedIdentifier(const QStringList& names) override;
    std::unique_ptr<MarkerType> getIdentifier(const QString& name) override;
    std::unique_ptr<MarkerType> getRegister(const QString& name) override;
    bool isUserTypeName(const QString& name) override;
    ExpressionType cast(const BaseType* type, const ExpressionType& value) override;
    void getDereference(MarkerType* marker, int64_t index) override;
    void getDereference(MarkerType* marker, const QString& fieldName) override;
    void getDereference(MarkerType* marker, const QStringList& names) override;
    std::unique_ptr<MarkerType> getAddressof(MarkerType* marker) override;
    ExpressionType getSizeof(MarkerType* marker) override;
    ExpressionType assign(MarkerType* marker, const ExpressionType& value) override;
    ExpressionType getValue(MarkerType* marker) override;

    unsigned wordSize() const { return m_wordSize; }
    // The type of a register of so many bytes.
    ZOFFType* registerType(unsigned length) const;

private:
    friend class VariableDisplay;
    class MemoryBuffer;
    struct BuiltIn;

    void makeBuiltInTypes();
    ZOFFType* builtIn(const char* name) const;
    std::shared_ptr<Pool> typePool();
    ZOFFType* getType(const BaseType* type);
    ZOFFType* structType(const class StructType& type);
    ZOFFType* registerType(const class RegisterType& type);
    int64_t elementCount(const Expression& size);

    void fillMemoryBuffer(const MyMarker& marker, bool lazy);
    void fillFromRegisters(const MyMarker& marker);
    void writeMemoryBuffer(const MyMarker& marker);
    unsigned readSpace(DebugMarkerType::markerType kind, uint32_t address, unsigned count,
                       unsigned char* bytes);
    unsigned writeSpace(DebugMarkerType::markerType kind, uint32_t address, unsigned count,
                        const unsigned char* bytes);
    ExpressionType decodeType(const ZOFFType* type);
    ExpressionType decodeSimpleType(const ZOFFType* type);
    void encodeType(const ZOFFType* type, const ExpressionType& value);
    uint64_t bitField(const MyMarker& marker);
    // Turns the marker of a pointer into that of what it points to.
    void followPointer(MyMarker& marker);

    unsigned m_wordSize;
    Pool m_builtInPool;
    std::vector<BuiltIn> m_builtIns;
    ZOFFType* m_defaultType = nullptr;
    ZOFFType* m_threeByteType = nullptr;
    std::shared_ptr<Pool> m_typePool; // of the types that casts make
    ZOFFSymbol* m_lastSymbol = nullptr;
    bool m_sideEffect = false;
    bool m_unreadable = false; // something that a block was asked for could not be read
};
