#include "debug/evaluation/TypeQualifier.h"

#include "zoff/ZOFFType.h"

#include <algorithm>

namespace {

struct Space {
    ZOFFTag qualifier;
    DebugMarkerType::markerType kind;
};

constexpr Space Spaces[] = {
    {ZOFFTag::DataSpace, DebugMarkerType::Data},
    {ZOFFTag::CodeSpace, DebugMarkerType::Code},
    {ZOFFTag::EepromSpace, DebugMarkerType::Eeprom},
    {ZOFFTag::PeripheralSpace, DebugMarkerType::Peripheral},
};

} // namespace

ZOFFType* beneath(ZOFFType* type)
{
    while (type && type->isQualified())
        type = static_cast<ZOFFQualifiedType*>(type)->baseType();
    return type;
}

DebugMarkerType::markerType spaceOf(const ZOFFType* type)
{
    if (type && type->isQualified())
        for (const Space& space : Spaces)
            if (space.qualifier == static_cast<const ZOFFQualifiedType*>(type)->qualifier())
                return space.kind;
    return DebugMarkerType::Data;
}

ZOFFTag qualifierOf(DebugMarkerType::markerType kind)
{
    for (const Space& space : Spaces)
        if (space.kind == kind)
            return space.qualifier;
    return ZOFFTag::DataSpace;
}

uint32_t sizeOf(const ZOFFType* type)
{
    return uint32_t(std::max(type->size(), 0));
}

FieldPlace placeOf(const ZOFFDynamicField& field, bool rawBitOffset)
{
    int64_t offset = field.bitOffset(), size = field.bitSize();
    int64_t bits = int64_t(sizeOf(field.type())) * 8;
    if ((offset % 8 == 0 && size % 8 == 0 && bits == size) || bits == 0)
        return {int32_t(offset / 8), 0, 0};
    if (rawBitOffset)
        return {0, int32_t(offset), int32_t(size)};
    int64_t unit = offset >= 0 ? offset / bits : -((bits - 1 - offset) / bits);
    return {int32_t(unit * (bits / 8)), int32_t(offset - unit * bits), int32_t(size)};
}
