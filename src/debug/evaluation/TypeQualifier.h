// Small facts about types that evaluation and display share: the memory that a qualifier names, the type
// beneath it, sizes that can be trusted, and where a field lies.
#pragma once

#include "debug/evaluation/DebugMarkerType.h"
#include "zoff/ZOFFTags.h"

class ZOFFDynamicField;

// The type without its qualifiers.
ZOFFType* beneath(ZOFFType* type);
// The memory that the type's qualifier names; data memory without one.
DebugMarkerType::markerType spaceOf(const ZOFFType* type);
ZOFFTag qualifierOf(DebugMarkerType::markerType kind);

// In bytes, 0 for a size that a file has as a negative number.
uint32_t sizeOf(const ZOFFType* type);

// Where a field lies in its structure: bytes, and for a bit-field the bits in a number of its type's size.
struct FieldPlace {
    int32_t offset;
    int32_t bitOffset; // both 0 for a field of whole bytes
    int32_t bitSize;
};
// With rawBitOffset a bit-field stays at the structure's start.
FieldPlace placeOf(const ZOFFDynamicField& field, bool rawBitOffset);
