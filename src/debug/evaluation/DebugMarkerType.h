// Where a value lies in the target: a memory or register, an address, bits in it, and the value's type. A
// constant is a place, too, whose address is the value.
#pragma once

#include "expression/MarkerType.h"

#include <QString>

#include <cstdint>
#include <memory>

class Pool;
class ZOFFExpressionEvaluator;
class ZOFFType;

class DebugMarkerType : public MarkerType {
public:
    enum markerType { Peripheral = 0, Eeprom = 1, Code = 2, Data = 3, Register = 4, Constant = 5 };

    markerType kind = Data;
    bool littleEndian = true;
    unsigned wordSize = 0;
    uint64_t address = 0; // the number of a register, the value of a constant
    int32_t offset = 0;   // in bytes from the address
    uint32_t sizeInBytes = 0;
    int32_t bitOffset = 0; // both 0 for a whole value
    int32_t bitSize = 0;
    // Bit offsets count from the address: the fields of a register.
    bool rawBitOffset = false;
    ZOFFType* type = nullptr;
    std::shared_ptr<Pool> pool; // of the type, when a cast made it
    ZOFFExpressionEvaluator* evaluator = nullptr;

    bool isMemory() const { return kind <= Data; }
    bool isBitField() const { return bitOffset != 0 || bitSize != 0; }
    // Address and offset, as memory addresses count.
    uint32_t location() const { return uint32_t(address) + uint32_t(offset); }

    // The name of a register, or the address in hexadecimal.
    QString getValueAsString() override;
    bool equiv(const MarkerType* other) const override;
    // The order in which breakpoints and watches sort: by kind, place and bits.
    bool lt(const MarkerType* other) const override;

protected:
    virtual QString registerNumberToName(unsigned number) const = 0;
    virtual bool registerNumberLT(unsigned a, unsigned b) const = 0;
};

// The marker of a ZOFFExpressionEvaluator, which must outlive it. Copies are markers of their own.
class MyMarker : public DebugMarkerType {
public:
    ExpressionType getValue() override;
    // Makes it the marker of the register of that name. Throws ParserException when there is none.
    void setValue(const QString& text) override;

protected:
    QString registerNumberToName(unsigned number) const override;
    bool registerNumberLT(unsigned a, unsigned b) const override;
};
