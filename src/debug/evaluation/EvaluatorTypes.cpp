// Types that a program does not have: the built-in ones, and those that casts describe.
#include "debug/evaluation/TypeQualifier.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "debug/evaluation/limits.h"
#include "expression/BaseType.h"
#include "expression/Expression.h"
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"
#include "support/Endian.h"
#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <limits>

struct ZOFFExpressionEvaluator::BuiltIn {
    const char* name;
    ZOFFType* type;
};

namespace {

enum class Family { Char, Signed, Unsigned, Float };

struct BuiltInRow {
    const char* name;
    int32_t size; // 0 stands for the word size
    Family family;
};

constexpr BuiltInRow BuiltInTypes[] = {
    {"char", 1, Family::Char},
    {"signed char", 1, Family::Signed},
    {"unsigned char", 1, Family::Unsigned},
    {"short", 2, Family::Signed},
    {"unsigned short", 2, Family::Unsigned},
    {"int", 0, Family::Signed},
    {"unsigned int", 0, Family::Unsigned},
    {"long", 4, Family::Signed},
    {"unsigned long", 4, Family::Unsigned},
    {"long long", 8, Family::Signed},
    {"unsigned long long", 8, Family::Unsigned},
    {"float", 4, Family::Float},
    {"double", 8, Family::Float},
};

// By the kind of a SimpleType, plain and unsigned.
constexpr const char* SimpleNames[][2] = {
    {"char", "unsigned char"}, {"short", "unsigned short"},         {"int", "unsigned int"},
    {"long", "unsigned long"}, {"long long", "unsigned long long"}, {"float", "float"},
    {"double", "double"},
};

int64_t roundedUp(int64_t value, int64_t unit)
{
    return (value + unit - 1) / unit * unit;
}

// A bit position or size as a file could have it.
int32_t asBits(int64_t bits)
{
    if (bits < 0 || bits > std::numeric_limits<int32_t>::max())
        throw ParserException("type is too large");
    return int32_t(bits);
}

} // namespace

ZOFFExpressionEvaluator::ZOFFExpressionEvaluator(unsigned wordSize, Endian::EndianType endian)
    : DebugExpressionParser(endian), m_wordSize(wordSize)
{
    makeBuiltInTypes();
}

ZOFFExpressionEvaluator::~ZOFFExpressionEvaluator() = default;

void ZOFFExpressionEvaluator::makeBuiltInTypes()
{
    CurrentPool current(&m_builtInPool);
    auto simple = [](Family family, int32_t size) {
        return new ZOFFSimpleType(family == Family::Char     ? ZOFFTag::Char
                                  : family == Family::Signed ? ZOFFTag::Int
                                                             : ZOFFTag::Unsigned,
                                  size);
    };
    for (const BuiltInRow& row : BuiltInTypes) {
        int32_t size = row.size ? row.size : int32_t(m_wordSize);
        ZOFFType* type = row.family == Family::Float ? static_cast<ZOFFType*>(new ZOFFFloatType(size))
                                                     : simple(row.family, size);
        type->setName(HString::intern(row.name));
        m_builtIns.push_back({row.name, type});
    }
    m_threeByteType = simple(Family::Unsigned, 3);
    m_defaultType = builtIn("unsigned int");
}

ZOFFType* ZOFFExpressionEvaluator::builtIn(const char* name) const
{
    for (const BuiltIn& row : m_builtIns)
        if (strcmp(row.name, name) == 0)
            return row.type;
    return m_defaultType;
}

// The pool for new types. Markers keep the pools of theirs, so a full one is left to them.
std::shared_ptr<Pool> ZOFFExpressionEvaluator::typePool()
{
    if (!m_typePool || m_typePool->capacity() > DisplayLimits::TypePool)
        m_typePool = std::make_shared<Pool>();
    return m_typePool;
}

ExpressionType ZOFFExpressionEvaluator::cast(const BaseType* type, const ExpressionType& value)
{
    std::shared_ptr<Pool> pool = typePool();
    ZOFFType* wanted = nullptr;
    try {
        CurrentPool current(pool.get());
        wanted = getType(type);
    } catch (const ParserException&) {
        throw;
    } catch (const HException&) { // the limits of types
        throw ParserException("type is too large");
    }
    std::unique_ptr<MyMarker> marker;
    if (value.getType() == ExpressionType::Marker) {
        marker = std::make_unique<MyMarker>(*static_cast<MyMarker*>(value.getMarker()));
        marker->type = wanted;
        marker->sizeInBytes = sizeOf(wanted);
    } else {
        marker = mkExpressionType(wanted, value.getUInteger(),
                                  wanted->isArray() ? DebugMarkerType::Data : DebugMarkerType::Constant);
    }
    marker->pool = std::move(pool);
    marker->rawBitOffset = dynamic_cast<const RegisterType*>(type) != nullptr;
    return ExpressionType(std::move(marker));
}

int64_t ZOFFExpressionEvaluator::elementCount(const Expression& size)
{
    ExpressionType count = size.evaluate();
    count.evaluate();
    if (count.getType() != ExpressionType::Signed && count.getType() != ExpressionType::Unsigned)
        throw ParserException("bad index type");
    if (count.getType() == ExpressionType::Signed && count.getInteger() < 0)
        throw ParserException("bad index type");
    return int64_t(std::min<uint64_t>(count.getUInteger(), std::numeric_limits<int64_t>::max()));
}

// Made in the current pool.
ZOFFType* ZOFFExpressionEvaluator::getType(const BaseType* type)
{
    if (auto* simple = dynamic_cast<const SimpleType*>(type))
        return builtIn(SimpleNames[simple->kind()][simple->isUnsigned()]);
    if (auto* user = dynamic_cast<const UserType*>(type)) {
        ZOFFType* found = getNamedType(user->name().toUtf8().constData());
        return found ? found : m_defaultType;
    }
    if (auto* pointer = dynamic_cast<const PointerType*>(type)) {
        auto* made = new ZOFFPtrType(int32_t(m_wordSize));
        made->setTarget(getType(pointer->target()));
        return made;
    }
    if (auto* array = dynamic_cast<const ArrayType*>(type)) {
        ZOFFType* element = getType(array->element());
        return new ZOFFArrayType(element, elementCount(*array->size()));
    }
    if (auto* structure = dynamic_cast<const StructType*>(type))
        return structType(*structure);
    if (auto* registers = dynamic_cast<const RegisterType*>(type))
        return registerType(*registers);
    return m_defaultType;
}

// A field without a bit size takes the next whole bytes: any for a byte, an even one for others.
ZOFFType* ZOFFExpressionEvaluator::structType(const StructType& type)
{
    std::vector<ZOFFDynamicField*> fields;
    int64_t position = 0;
    for (const StructType::Field& field : type.fields()) {
        ZOFFType* fieldType = getType(field.type);
        int64_t bits = field.bitSize;
        if (bits < 0 && !field.name.isEmpty()) {
            bits = 8 * int64_t(sizeOf(fieldType));
            position = roundedUp(position, sizeOf(fieldType) == 1 ? 8 : 16);
        }
        bits = std::max<int64_t>(bits, 0);
        if (!field.name.isEmpty())
            fields.push_back(new ZOFFDynamicField(HString::intern(field.name.toStdString()), asBits(position),
                                                  asBits(bits), fieldType));
        position = asBits(position + asBits(bits));
    }
    auto* made = new ZOFFStrucType(int32_t(roundedUp(position, 8) / 8));
    for (ZOFFDynamicField* field : fields)
        made->addField(field);
    return made;
}

ZOFFType* ZOFFExpressionEvaluator::registerType(const RegisterType& type)
{
    if (type.size() < 0 || type.size() > DisplayLimits::Register)
        throw ParserException("type is too large");
    ZOFFType* word = nullptr;
    switch (type.size()) {
    case 1: word = builtIn("unsigned char"); break;
    case 2: word = builtIn("unsigned short"); break;
    case 4: word = builtIn("unsigned long"); break;
    case 8: word = builtIn("unsigned long long"); break;
    default: word = new ZOFFSimpleType(ZOFFTag::Unsigned, int32_t(type.size()));
    }
    auto* made = new ZOFFStrucType(int32_t(type.size()));
    for (const RegisterType::Field& field : type.fields())
        made->addField(new ZOFFDynamicField(HString::intern(field.name.toStdString()),
                                            asBits(field.bitOffset), asBits(field.bitSize), word));
    return made;
}
