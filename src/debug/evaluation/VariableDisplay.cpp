#include "debug/evaluation/VariableDisplay.h"

#include "debug/evaluation/MemoryBuffer.h"
#include "debug/evaluation/ReadAhead.h"
#include "debug/evaluation/TypeQualifier.h"
#include "debug/evaluation/limits.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <utility>

namespace {

// Larger elements and structures may hold arrays of which only the beginning is shown.
constexpr uint32_t ReadWhole = 256; // bytes

ExpressionType text(const char* shown)
{
    return ExpressionType(shown, unsigned(strlen(shown)));
}

QString element(const QString& of, unsigned index)
{
    return of + u'[' + QString::number(index) + u']';
}

} // namespace

VariableDisplay::VariableDisplay(ZOFFExpressionEvaluator& evaluator, VariableListBuilder& builder)
    : m_evaluator(evaluator), m_builder(builder), m_maximumItems(DisplayLimits::Items)
{
}

const QString& VariableDisplay::nameOf(const ZOFFType* type)
{
    auto found = m_names.constFind(type);
    if (found == m_names.constEnd())
        found = m_names.insert(type, QString::fromUtf8(type->getName()->c_str()));
    return *found;
}

MyMarker VariableDisplay::getAddress(const Item& item) const
{
    MyMarker marker = item.base;
    marker.offset = int32_t(uint32_t(marker.offset) + item.position);
    marker.bitOffset = marker.bitSize = 0;
    marker.type = item.type;
    marker.sizeInBytes = sizeOf(item.type);
    return marker;
}

ExpressionType VariableDisplay::addressSizeString(const MyMarker& marker) const
{
    return ExpressionType(u'@' + MyMarker(marker).getValueAsString(), marker.sizeInBytes);
}

// Positions count from the marker; a register or a constant stands whole in its block, with the bytes in
// front of the marker's offset.
void VariableDisplay::seek(const MyMarker& base, uint32_t position)
{
    m_evaluator.block().setMemoryPointer(base.isMemory() ? position : uint32_t(base.offset) + position);
}

// All of this is going to be shown.
void VariableDisplay::announce(uint32_t position, uint64_t size)
{
    if (auto* object = dynamic_cast<ObjectBlock*>(&m_evaluator.block()))
        object->announce(position, uint32_t(std::min<uint64_t>(size, UINT32_MAX)));
}

void VariableDisplay::add(const QString& name, const QString& path, const ExpressionType& value,
                          const QString& typeName, const MyMarker& marker)
{
    if (std::exchange(m_evaluator.m_unreadable, false))
        m_builder.addPrimitive(name, path, text("???"), typeName, &marker);
    else
        m_builder.addPrimitive(name, path, value, typeName, &marker);
}

void VariableDisplay::add(const Item& item, const ExpressionType& value)
{
    add(item.name, item.path, value, nameOf(item.type), getAddress(item));
}

void VariableDisplay::formatVariable(const QString& name, const QString& path, const MyMarker& marker)
{
    try {
        ZOFFExpressionEvaluator::MemoryBuffer buffer(m_evaluator, marker, true);
        if (m_evaluator.m_unreadable) // wholly
            add({name, path, marker.type, marker, 0}, ExpressionType());
        else if (marker.isBitField())
            formatBits(name, path, marker);
        else
            formatType({name, path, marker.type, marker, 0});
    } catch (const ParserException&) { // a register that a frame does not have
        m_evaluator.m_unreadable = true;
        add(name, path, ExpressionType(), nameOf(marker.type), marker);
    }
}

void VariableDisplay::formatBits(const QString& name, const QString& path, const MyMarker& marker)
{
    ExpressionType value((unsigned long long)(m_evaluator.bitField(marker)), marker.sizeInBytes,
                         unsigned(marker.bitSize));
    add(name, path, value, nameOf(marker.type), marker);
}

void VariableDisplay::formatType(const Item& given)
{
    Item item = given;
    item.type = beneath(item.type);
    ++m_items;
    if (m_nesting >= DisplayLimits::Nesting) {
        add(item, text("..."));
        return;
    }
    ++m_nesting;
    seek(item.base, item.position);
    if (item.type->isFloat()) {
        add(item, ExpressionType(m_evaluator.getFloat(sizeOf(item.type)), sizeOf(item.type)));
    } else if (item.type->isPtr()) {
        formatPtr(item);
    } else if (item.type->isArray()) {
        formatArray(item);
    } else if (item.type->isStruc()) {
        formatStruct(item, ".");
    } else if (sizeOf(item.type) == 0 && item.position == 0) { // a function, by its address
        unsigned size = std::min(item.base.sizeInBytes, 8u);
        add(item, ExpressionType((unsigned long long)(m_evaluator.block().getInt(int(size))), size));
    } else {
        add(item, m_evaluator.decodeSimpleType(item.type));
    }
    --m_nesting;
}

void VariableDisplay::formatArray(const Item& item)
{
    auto* array = static_cast<ZOFFArrayType*>(item.type);
    ZOFFType* type = array->getElementType();
    unsigned count = unsigned(array->count());
    unsigned shown = count;
    switch (m_builder.getArrayEvalMode(item.name, nameOf(type), shown)) {
    case VariableListBuilder::ArrayNothing: return;
    case VariableListBuilder::ArraySummary: add(item, addressSizeString(getAddress(item))); return;
    case VariableListBuilder::ArrayString: {
        formatText(item, item.base.kind, getAddress(item).location(), count);
        return;
    }
    case VariableListBuilder::ArrayElements: break;
    }
    MyMarker marker = getAddress(item);
    VariableListBuilder::Token token =
        m_builder.beginArray(item.name, item.path, addressSizeString(marker), nameOf(item.type), &marker);
    if (sizeOf(type) <= ReadWhole)
        announce(item.position, uint64_t(std::min(count, shown)) * sizeOf(type));
    for (unsigned i = 0; i < std::min(count, shown) && !isFull(); ++i)
        formatType({element(item.name, i), element(item.path, i), type, item.base,
                    item.position + i * sizeOf(type)});
    m_builder.endArray(token);
}

void VariableDisplay::formatPtr(const Item& item)
{
    auto& pointer = *static_cast<ZOFFPtrType*>(item.type);
    unsigned size = sizeOf(&pointer);
    uint64_t address = m_evaluator.block().getInt(int(std::min(size, 8u)));
    if (pointer.representation() == ZOFFTag::WordPtr)
        address *= m_evaluator.wordSize();
    ZOFFType* target = beneath(pointer.target());
    auto mode = VariableListBuilder::PointerValue;
    unsigned count = 0;
    if (target && !target->isFunction() && !m_evaluator.m_unreadable)
        mode = m_builder.getPointerEvalMode(item.name, nameOf(target), address, count);
    switch (mode) {
    case VariableListBuilder::PointerValue:
        add(item, ExpressionType((unsigned long long)(address), size));
        return;
    case VariableListBuilder::PointerObject: formatTarget(item, pointer, address); return;
    case VariableListBuilder::PointerArray: formatElements(item, address, count); return;
    case VariableListBuilder::PointerString:
        formatText(item, spaceOf(pointer.target()), uint32_t(address), DisplayLimits::String);
        return;
    }
}

void VariableDisplay::formatTarget(const Item& item, const ZOFFPtrType& pointer, uint64_t address)
{
    ZOFFType* type = beneath(pointer.target());
    std::unique_ptr<MyMarker> target = m_evaluator.mkExpressionType(type, address, spaceOf(pointer.target()));
    target->pool = item.base.pool;
    ZOFFExpressionEvaluator::MemoryBuffer buffer(m_evaluator, *target, true);
    if (type->isStruc())
        formatStruct({item.name, item.path, type, *target, 0}, "->");
    else
        formatType({QStringLiteral("(*") + item.name + u')', QStringLiteral("(*") + item.path + u')', type,
                    *target, 0});
}

// A pointer's target as an array of so many.
void VariableDisplay::formatElements(const Item& item, uint64_t address, unsigned count)
{
    auto& pointer = *static_cast<ZOFFPtrType*>(item.type);
    ZOFFType* type = beneath(pointer.target());
    uint64_t size = std::min<uint64_t>(uint64_t(count) * sizeOf(type), UINT32_MAX);
    std::unique_ptr<MyMarker> target =
        m_evaluator.mkExpressionType(type, address, spaceOf(pointer.target()), 0, uint32_t(size));
    target->pool = item.base.pool;
    ZOFFExpressionEvaluator::MemoryBuffer buffer(m_evaluator, *target, true);
    VariableListBuilder::Token token =
        m_builder.beginArray(item.name + QStringLiteral("[]"), item.path, addressSizeString(*target),
                             nameOf(&pointer), target.get());
    for (unsigned i = 0; i < count && !isFull(); ++i)
        formatType(
            {element(QString(), i), element(u'(' + item.path + u')', i), type, *target, i * sizeOf(type)});
    m_builder.endArray(token);
}

// Bytes up to a zero, or up to where they can't be read any more.
void VariableDisplay::formatText(const Item& item, DebugMarkerType::markerType space, uint32_t address,
                                 unsigned maximum)
{
    constexpr unsigned Piece = 64;
    QByteArray bytes;
    bool ended = false, readable = true;
    unsigned limit = std::min(maximum, DisplayLimits::String);
    if (space > DebugMarkerType::Data) { // all that a register or a constant has stands in the block
        std::vector<unsigned char> held(std::min(limit, DisplayLimits::Register));
        m_evaluator.block().getBytes(unsigned(held.size()), held.data());
        bytes = QByteArray(reinterpret_cast<const char*>(held.data()), qsizetype(held.size()));
        ended = true;
    }
    for (unsigned step = Piece; !ended && unsigned(bytes.size()) < limit;) {
        unsigned char piece[Piece];
        unsigned count = std::min(step, limit - unsigned(bytes.size()));
        if (m_evaluator.readSpace(space, address + uint32_t(bytes.size()), count, piece) == count) {
            bytes.append(reinterpret_cast<const char*>(piece), qsizetype(count));
            ended = memchr(piece, 0, count) != nullptr;
        } else if (step > 1) {
            step = 1; // towards the end of the memory
        } else {
            readable = false;
            break;
        }
    }
    if (qsizetype zero = bytes.indexOf('\0'); zero >= 0)
        bytes.truncate(zero);
    else if (!readable && bytes.isEmpty())
        m_evaluator.m_unreadable = true;
    else if (!readable || limit < maximum || (item.type->isPtr() && unsigned(bytes.size()) == limit))
        bytes += "...";
    add(item.name, item.path, ExpressionType(QString::fromUtf8(bytes), unsigned(bytes.size())),
        QStringLiteral("char *"), getAddress(item));
}

void VariableDisplay::formatStruct(const Item& item, const char* selector)
{
    auto* structure = static_cast<ZOFFStrucType*>(item.type);
    MyMarker marker = getAddress(item);
    if (m_builder.getStructEvalMode(item.name, nameOf(structure)) == VariableListBuilder::StructSummary) {
        add(item, addressSizeString(marker));
        return;
    }
    VariableListBuilder::Token token =
        m_builder.beginObject(item.name, item.path, addressSizeString(marker), nameOf(structure), &marker);
    QString prefix = u'(' + item.path + u')' + QLatin1String(selector);
    if (sizeOf(structure) <= ReadWhole)
        announce(item.position, sizeOf(structure));
    for (ZOFFField* each : structure->fields()) {
        if (isFull())
            break;
        if (each->isStatic() || !each->type())
            continue;
        auto& field = *static_cast<ZOFFDynamicField*>(each);
        FieldPlace place = placeOf(field, item.base.rawBitOffset);
        QString name = QString::fromUtf8(field.name() ? field.name()->c_str() : "");
        uint32_t position = item.position + uint32_t(place.offset);
        if (place.bitOffset == 0 && place.bitSize == 0) {
            formatType({name, prefix + name, field.type(), item.base, position});
            continue;
        }
        MyMarker bits = getAddress({name, QString(), field.type(), item.base, position});
        bits.bitOffset = place.bitOffset;
        bits.bitSize = place.bitSize;
        seek(item.base, position);
        ++m_items;
        formatBits(name, prefix + name, bits);
    }
    m_builder.endObject(token);
}

void ZOFFExpressionEvaluator::formatVariable(const QString& name, const QString& path, const MyMarker& marker,
                                             VariableListBuilder* builder)
{
    VariableDisplay(*this, *builder).formatVariable(name, path, marker);
}

void ZOFFExpressionEvaluator::formatSymbol(ZOFFSymbol* symbol, VariableListBuilder* builder)
{
    std::unique_ptr<MyMarker> marker;
    if (symbol->value())
        marker = getExpressionType(symbol->type(), symbol->value(), true);
    if (!marker)
        return;
    QString name = QString::fromUtf8(symbol->name() ? symbol->name()->c_str() : "");
    formatVariable(name, name, *marker, builder);
}

void ZOFFExpressionEvaluator::formatExpression(const QString& expression, const QString& name,
                                               VariableListBuilder* builder)
{
    Tree tree = parse(expression);
    if (!tree)
        return;
    ExpressionType value = tree->evaluate();
    if (value.getType() == ExpressionType::Marker)
        formatVariable(name, expression, *static_cast<MyMarker*>(value.getMarker()), builder);
    else
        builder->addPrimitive(name, expression, value, value.TypeToString(false), nullptr);
}
