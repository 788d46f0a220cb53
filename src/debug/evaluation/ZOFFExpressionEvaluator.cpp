// What the names, elements and fields of an expression stand for.
#include "debug/evaluation/ZOFFExpressionEvaluator.h"

#include "debug/evaluation/MemoryBuffer.h"
#include "debug/evaluation/TypeQualifier.h"
#include "expression/ExpressionType.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"
#include "support/Endian.h"
#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <algorithm>

namespace {

constexpr ZOFFTag FrameOperator = ZOFFTag::OtherOperator; // a register and what is added to it

} // namespace

void ZOFFExpressionEvaluator::beginEvaluation()
{
    m_lastSymbol = nullptr;
    m_sideEffect = false;
}

std::unique_ptr<MyMarker> ZOFFExpressionEvaluator::mkExpressionType(ZOFFType* type, uint64_t address,
                                                                    DebugMarkerType::markerType kind,
                                                                    int32_t offset, uint32_t size,
                                                                    int32_t bitOffset, int32_t bitSize)
{
    auto marker = std::make_unique<MyMarker>();
    marker->kind = kind;
    marker->littleEndian = endian() == Endian::Little;
    marker->wordSize = m_wordSize;
    marker->address = address;
    marker->offset = offset;
    marker->bitOffset = bitOffset;
    marker->bitSize = bitSize;
    marker->type = type ? type : m_defaultType;
    marker->sizeInBytes = size ? size : sizeOf(marker->type);
    if (marker->sizeInBytes == 0)
        marker->sizeInBytes = sizeOf(m_defaultType);
    marker->evaluator = this;
    return marker;
}

std::unique_ptr<MyMarker> ZOFFExpressionEvaluator::getExpressionType(ZOFFType* type, ZOFFExpr* expr,
                                                                     bool addressOnly)
{
    if (expr->kind() == ZOFFKind::RegisterExpr)
        return mkExpressionType(type, uint32_t(static_cast<ZOFFRegisterExpr*>(expr)->registerNumber()),
                                DebugMarkerType::Register);
    if (expr->kind() == ZOFFKind::BinaryExpr && static_cast<ZOFFBinaryExpr*>(expr)->op() == FrameOperator) {
        auto* sum = static_cast<ZOFFBinaryExpr*>(expr);
        if (sum->left()->kind() != ZOFFKind::RegisterExpr)
            return nullptr;
        ZOFFEvaluation offset = sum->right()->evaluate();
        if (offset.unresolved)
            return nullptr;
        int base = static_cast<ZOFFRegisterExpr*>(sum->left())->registerNumber();
        uint32_t address = getSPValue(base) + uint32_t(offset.value);
        if (base == registerNameToNumber("SP")) // instructions move no other register of a frame
            address -= uint32_t(getSPAdjustment());
        return mkExpressionType(type, address, DebugMarkerType::Data);
    }
    ZOFFEvaluation evaluation = expr->evaluate();
    if (evaluation.unresolved)
        return nullptr;
    if (evaluation.section && type && !beneath(type)->isFunction())
        return mkExpressionType(beneath(type), uint32_t(evaluation.value), spaceOf(type));
    if (addressOnly)
        return nullptr;
    return mkExpressionType(type, uint64_t(evaluation.value), DebugMarkerType::Constant);
}

std::unique_ptr<MarkerType> ZOFFExpressionEvaluator::getIdentifier(const QString& name)
{
    ZOFFSymbol* symbol = getSymbol(name.toUtf8().constData());
    if (!symbol || !symbol->value())
        throw ParserException(name + QLatin1String(" symbol not found"));
    m_lastSymbol = symbol;
    std::unique_ptr<MyMarker> marker = getExpressionType(symbol->type(), symbol->value(), false);
    if (!marker)
        throw ParserException("invalid address");
    return marker;
}

std::unique_ptr<MarkerType> ZOFFExpressionEvaluator::getScopedIdentifier(const QStringList&)
{
    throw ParserException(":: not supported");
}

ZOFFType* ZOFFExpressionEvaluator::registerType(unsigned length) const
{
    switch (length) {
    case 1: return builtIn("unsigned char");
    case 2: return builtIn("unsigned short");
    case 3: return m_threeByteType;
    case 4: return builtIn("unsigned long");
    case 8: return builtIn("unsigned long long");
    default: return m_defaultType;
    }
}

std::unique_ptr<MarkerType> ZOFFExpressionEvaluator::getRegister(const QString& name)
{
    int number = registerNameToNumber(name.toUtf8().constData());
    if (number < 0)
        throw ParserException("no such register");
    return mkExpressionType(registerType(getRegisterLength(unsigned(number))), unsigned(number),
                            DebugMarkerType::Register);
}

bool ZOFFExpressionEvaluator::isUserTypeName(const QString& name)
{
    return getNamedType(name.toUtf8().constData()) != nullptr;
}

std::unique_ptr<MarkerType> ZOFFExpressionEvaluator::getAddressof(MarkerType* marker)
{
    auto* place = static_cast<MyMarker*>(marker);
    if (!place->isMemory())
        throw ParserException("can't take address of register/constant");
    std::shared_ptr<Pool> pool = place->pool ? place->pool : typePool();
    CurrentPool current(pool.get());
    auto* type = new ZOFFPtrType(int32_t(m_wordSize));
    ZOFFType* target = place->type;
    if (place->kind != DebugMarkerType::Data) // a pointer knows its memory by its target
        target = new ZOFFQualifiedType(target, qualifierOf(place->kind));
    type->setTarget(target);
    std::unique_ptr<MyMarker> address = mkExpressionType(type, place->location(), DebugMarkerType::Constant);
    address->pool = std::move(pool);
    return address;
}

ExpressionType ZOFFExpressionEvaluator::getSizeof(MarkerType* marker)
{
    return ExpressionType((long long)(sizeOf(static_cast<MyMarker*>(marker)->type)), 4);
}

void ZOFFExpressionEvaluator::followPointer(MyMarker& marker)
{
    auto* pointer = static_cast<ZOFFPtrType*>(marker.type);
    if (!pointer->target())
        throw ParserException("not an array type");
    uint64_t value = 0;
    {
        MemoryBuffer buffer(*this, marker, false);
        value = block().getInt(int(sizeOf(pointer)));
        buffer.check();
    }
    if (pointer->representation() == ZOFFTag::WordPtr)
        value *= m_wordSize;
    marker.kind = spaceOf(pointer->target());
    marker.address = value;
    marker.offset = 0;
    marker.bitOffset = marker.bitSize = 0;
    marker.type = beneath(pointer->target());
    marker.sizeInBytes = sizeOf(marker.type);
}

void ZOFFExpressionEvaluator::getDereference(MarkerType* marker, int64_t index)
{
    auto& place = *static_cast<MyMarker*>(marker);
    place.type = beneath(place.type);
    ZOFFType* element = nullptr;
    if (place.type->isPtr()) {
        followPointer(place);
        element = place.type;
    } else if (place.type->isArray()) {
        element = beneath(place.type->getElementType());
    } else if (place.kind == DebugMarkerType::Register) {
        int number = registerDereference(int(place.address), index);
        if (number < 0)
            throw ParserException("no such register");
        place.address = unsigned(number);
        place.type = registerType(getRegisterLength(unsigned(number)));
        place.sizeInBytes = sizeOf(place.type);
        return;
    } else {
        throw ParserException("not an array type");
    }
    place.type = element;
    place.sizeInBytes = sizeOf(element);
    int64_t offset = 0;
    if (__builtin_mul_overflow(index, int64_t(place.sizeInBytes), &offset) ||
        __builtin_add_overflow(offset, int64_t(place.offset), &offset) || offset != int32_t(offset))
        throw ParserException("index out of range");
    place.offset = int32_t(offset);
}

void ZOFFExpressionEvaluator::getDereference(MarkerType* marker, const QString& fieldName)
{
    auto& place = *static_cast<MyMarker*>(marker);
    place.type = beneath(place.type);
    if (place.type->isPtr())
        followPointer(place);
    if (!place.type->isStruc())
        throw ParserException("not a struct type");
    ZOFFField* field = place.type->findField(HString::intern(fieldName.toStdString()));
    if (!field || field->isStatic() || !field->type())
        throw ParserException("unknown field");
    FieldPlace found = placeOf(*static_cast<ZOFFDynamicField*>(field), place.rawBitOffset);
    int32_t offset = 0;
    if (__builtin_add_overflow(place.offset, found.offset, &offset))
        throw ParserException("index out of range");
    place.offset = offset;
    place.bitOffset = found.bitOffset;
    place.bitSize = found.bitSize;
    place.type = field->type();
    place.sizeInBytes = sizeOf(place.type);
}

void ZOFFExpressionEvaluator::getDereference(MarkerType*, const QStringList&)
{
    throw ParserException(":: not supported");
}
