// What stands at a marker: reading it, decoding it, and writing it back.
#include "debug/evaluation/MemoryBuffer.h"
#include "debug/evaluation/ReadAhead.h"
#include "debug/evaluation/TypeQualifier.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "debug/evaluation/limits.h"
#include "zoff/ZOFFType.h"

#include <algorithm>

namespace {

constexpr unsigned NumberSize = 8; // bytes of the widest number

} // namespace

unsigned ZOFFExpressionEvaluator::readSpace(DebugMarkerType::markerType kind, uint32_t address,
                                            unsigned count, unsigned char* bytes)
{
    switch (kind) {
    case DebugMarkerType::Peripheral: return readPeripheralMemory(address, count, bytes);
    case DebugMarkerType::Eeprom: return readEepromMemory(address, count, bytes);
    case DebugMarkerType::Code: return readCodeMemory(address, count, bytes);
    default: return readMemory(address, count, bytes);
    }
}

unsigned ZOFFExpressionEvaluator::writeSpace(DebugMarkerType::markerType kind, uint32_t address,
                                             unsigned count, const unsigned char* bytes)
{
    switch (kind) {
    case DebugMarkerType::Peripheral: return writePeripheralMemory(address, count, bytes);
    case DebugMarkerType::Eeprom: return writeEepromMemory(address, count, bytes);
    case DebugMarkerType::Code: return writeCodeMemory(address, count, bytes);
    default: return writeMemory(address, count, bytes);
    }
}

void ZOFFExpressionEvaluator::fillMemoryBuffer(const MyMarker& marker, bool lazy)
{
    if (marker.kind == DebugMarkerType::Register) {
        fillFromRegisters(marker);
    } else if (marker.kind == DebugMarkerType::Constant) {
        std::vector<unsigned char> bytes(NumberSize);
        Endian::packNumber(bytes.data(), 0, marker.address, NumberSize, endian());
        pushBlock(std::make_unique<MemoryBlock>(std::move(bytes), endian()));
        block().setMemoryPointer(unsigned(marker.offset));
    } else if (lazy || marker.sizeInBytes > DisplayLimits::FilledAtOnce) {
        pushBlock(
            std::make_unique<ObjectBlock>(*this, endian(), m_unreadable, marker.kind, marker.location()));
    } else {
        std::vector<unsigned char> bytes(marker.sizeInBytes);
        if (readSpace(marker.kind, marker.location(), marker.sizeInBytes, bytes.data()) != marker.sizeInBytes)
            m_unreadable = true;
        pushBlock(std::make_unique<MemoryBlock>(std::move(bytes), endian()));
    }
}

void ZOFFExpressionEvaluator::fillFromRegisters(const MyMarker& marker)
{
    bool fits = marker.offset >= 0 && unsigned(marker.offset) <= DisplayLimits::Register &&
                marker.sizeInBytes <= DisplayLimits::Register;
    if (!fits)
        m_unreadable = true;
    std::vector<unsigned char> bytes(fits ? marker.sizeInBytes + unsigned(marker.offset) : 0);
    unsigned number = unsigned(marker.address);
    for (unsigned at = 0; at < bytes.size(); number = nextRegisterNumber(number)) {
        unsigned left = unsigned(bytes.size()) - at;
        unsigned length = getRegisterLength(number);
        length = length ? std::min(length, left) : left;
        Endian::packNumber(bytes.data(), at, getRegister(number), std::min(length, NumberSize), endian());
        at += length;
    }
    pushBlock(std::make_unique<MemoryBlock>(std::move(bytes), endian()));
    block().setMemoryPointer(unsigned(marker.offset));
}

void ZOFFExpressionEvaluator::writeMemoryBuffer(const MyMarker& marker)
{
    if (marker.kind == DebugMarkerType::Constant)
        throw ParserException("can't update a constant");
    block().resetMemoryPointer();
    if (marker.kind == DebugMarkerType::Register) {
        unsigned left = marker.sizeInBytes + unsigned(marker.offset);
        for (unsigned number = unsigned(marker.address); left; number = nextRegisterNumber(number)) {
            unsigned length = getRegisterLength(number);
            length = length ? std::min(length, left) : left;
            setRegister(number, block().getInt(int(length)));
            left -= length;
        }
        return;
    }
    if (marker.sizeInBytes > DisplayLimits::FilledAtOnce) // what was put there is written already
        return;
    std::vector<unsigned char> bytes(marker.sizeInBytes);
    block().getBytes(marker.sizeInBytes, bytes.data());
    if (writeSpace(marker.kind, marker.location(), marker.sizeInBytes, bytes.data()) != marker.sizeInBytes)
        throw ParserException(QStringLiteral("cannot write ") + MyMarker(marker).getValueAsString());
}

// The bits of a marker, as the block's position has it.
uint64_t ZOFFExpressionEvaluator::bitField(const MyMarker& marker)
{
    if (marker.bitOffset < 0 || marker.bitSize <= 0 || marker.sizeInBytes > NumberSize ||
        int64_t(marker.bitOffset) + marker.bitSize > 8 * int64_t(marker.sizeInBytes)) {
        m_unreadable = true;
        return 0;
    }
    return block().unpackBitField(marker.sizeInBytes, unsigned(marker.bitOffset), unsigned(marker.bitSize),
                                  marker.littleEndian);
}

ExpressionType ZOFFExpressionEvaluator::getValue(MarkerType* marker)
{
    const auto& place = *static_cast<MyMarker*>(marker);
    MemoryBuffer buffer(*this, place, false);
    ExpressionType value;
    if (place.isBitField())
        value =
            ExpressionType((unsigned long long)(bitField(place)), place.sizeInBytes, unsigned(place.bitSize));
    else
        value = decodeType(place.type);
    buffer.check();
    return value;
}

ExpressionType ZOFFExpressionEvaluator::decodeSimpleType(const ZOFFType* type)
{
    unsigned size = sizeOf(type);
    uint64_t bits = block().getInt(int(std::min(size, NumberSize)));
    if (!type->isSimple() || static_cast<const ZOFFSimpleType*>(type)->simpleKind() != ZOFFTag::Int)
        return ExpressionType((unsigned long long)(bits), size);
    if (size > 0 && size < NumberSize) {
        unsigned unused = 64 - 8 * size;
        bits = uint64_t(int64_t(bits << unused) >> unused);
    }
    return ExpressionType((long long)(bits), size);
}

ExpressionType ZOFFExpressionEvaluator::decodeType(const ZOFFType* type)
{
    while (type->isQualified())
        type = static_cast<const ZOFFQualifiedType*>(type)->baseType();
    if (type->isSimple())
        return decodeSimpleType(type);
    if (type->isFloat())
        return ExpressionType(getFloat(sizeOf(type)), sizeOf(type));
    if (type->isPtr())
        return ExpressionType((unsigned long long)(block().getInt(int(std::min(sizeOf(type), NumberSize)))),
                              sizeOf(type));
    throw ParserException("can't decode non simple type");
}

void ZOFFExpressionEvaluator::encodeType(const ZOFFType* type, const ExpressionType& value)
{
    while (type->isQualified())
        type = static_cast<const ZOFFQualifiedType*>(type)->baseType();
    if (value.getType() == ExpressionType::String || value.getType() == ExpressionType::None)
        throw ParserException("can't encode non simple type");
    if (type->isSimple() || type->isPtr())
        block().putInt(value.getUInteger(), int(std::min(sizeOf(type), NumberSize)));
    else if (type->isFloat())
        putFloat(value.getFloating(), sizeOf(type));
    else
        throw ParserException("can't encode non simple type");
}

ExpressionType ZOFFExpressionEvaluator::assign(MarkerType* marker, const ExpressionType& value)
{
    const auto& place = *static_cast<MyMarker*>(marker);
    ExpressionType content = value;
    content.evaluate();
    {
        MemoryBuffer buffer(*this, place, false);
        if (place.kind == DebugMarkerType::Constant)
            throw ParserException("can't update a constant");
        buffer.check();
        if (place.isBitField()) {
            bitField(place); // whether the bits are there
            buffer.check();
            block().packBitField(content.getUInteger(), place.sizeInBytes, unsigned(place.bitOffset),
                                 unsigned(place.bitSize), place.littleEndian);
        } else {
            encodeType(place.type, content);
        }
        m_sideEffect = true;
        writeMemoryBuffer(place);
    }
    return getValue(marker);
}

void ZOFFExpressionEvaluator::assignExpression(const QString& expression, const ExpressionType& value)
{
    Tree tree = parse(expression);
    if (!tree)
        return;
    ExpressionType place = tree->evaluate();
    if (place.getType() == ExpressionType::Marker)
        assign(place.getMarker(), value);
}
