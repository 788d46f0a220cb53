// The reader's operand stack: what the records take from it, and the faults of those that take what is
// not there.
#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFReaderInline.h" // the steps of the reader
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"
#include "zoff/limits.h"

void ZOFFReader::bad(const char* what)
{
    throw HException(std::string("bad object file: ") + what);
}

void ZOFFReader::badOperand(const char* expected)
{
    throw HException(std::string("bad object file: operand type error (") + expected + " expected)");
}

void ZOFFReader::notASymbol()
{
    throw HException("operand type error: symbol expected");
}

void ZOFFReader::outOfRange()
{
    bad("operand value error (constant out of range)");
}

void ZOFFReader::endOfInput()
{
    throw HException("premature end of ZOFF file");
}

ZOFFObject* ZOFFReader::objectOf(const Entry& entry)
{
    switch (entry.kind) {
    case Entry::Const: return new ZOFFConstExpr(entry.value);
    case Entry::String: return new ZOFFString({entry.text, entry.length});
    default: return entry.object;
    }
}

// What is reached from two places is one object: a literal may get its type through one of them.
ZOFFReader::Entry ZOFFReader::shared(Entry entry)
{
    if (entry.kind == Entry::Const)
        entry.setObject(objectOf(entry));
    return entry;
}

ZOFFObject* ZOFFReader::popObject()
{
    return objectOf(popEntry());
}

ZOFFObject* ZOFFReader::popAnyObject()
{
    ZOFFObject* object = popObject();
    if (!object)
        badOperand("object");
    return object;
}

int32_t ZOFFReader::popInt32()
{
    int64_t value = popConst();
    if (value < INT32_MIN || value > int64_t(UINT32_MAX))
        outOfRange();
    return int32_t(uint32_t(value));
}

int32_t ZOFFReader::popSize()
{
    return int32_t(popConst(0, INT32_MAX));
}

ZOFFExpr* ZOFFReader::popExpr(bool allowNull)
{
    Entry entry = popEntry();
    if (allowNull && entry.isNull())
        return nullptr;
    if (entry.kind == Entry::String || entry.isNull() ||
        (entry.kind == Entry::Object && !entry.object->isExpr()))
        badOperand("expression");
    return static_cast<ZOFFExpr*>(objectOf(entry));
}

ZOFFScope* ZOFFReader::popScope(bool allowNull)
{
    Entry entry = popEntry();
    if (allowNull && entry.isNull())
        return nullptr;
    if (entry.kind != Entry::Object || !entry.object || !entry.object->isScope())
        badOperand("scope");
    return static_cast<ZOFFScope*>(entry.object);
}

std::string_view ZOFFReader::popString()
{
    Entry entry = popEntry();
    if (entry.kind == Entry::String)
        return {entry.text, entry.length};
    // A string that some record has looked at as an object.
    ZOFFObject* object = entry.objectOfKind(ZOFFKind::String);
    if (!object)
        badOperand("string");
    return static_cast<ZOFFString*>(object)->bytes();
}

ZOFFSection* ZOFFReader::popSection()
{
    ZOFFObject* object = popEntry().objectOfKind(ZOFFKind::Section);
    if (!object)
        badOperand("section");
    return static_cast<ZOFFSection*>(object);
}

ZOFFType* ZOFFReader::popType()
{
    ZOFFObject* object = popEntry().objectOfKind(ZOFFKind::Type);
    if (!object)
        badOperand("type");
    return static_cast<ZOFFType*>(object);
}

ZOFFFilename* ZOFFReader::popFile()
{
    ZOFFObject* object = popEntry().objectOfKind(ZOFFKind::Filename);
    if (!object)
        badOperand("file");
    return static_cast<ZOFFFilename*>(object);
}

// ---- names ----

// Interned text stays for good, and one pool may be cut into any number of overlapping names.
void ZOFFReader::chargeNameBytes(size_t count)
{
    m_nameBytes += int64_t(count);
    if (int64_t(count) > ZOFFLimits::NameLength ||
        m_nameBytes > ZOFFLimits::NameBytesFree + ZOFFLimits::NameBytesPerByte * int64_t(m_input.size()))
        bad("names too long");
}

const HString* ZOFFReader::nameOf(std::string_view bytes)
{
    chargeNameBytes(bytes.size());
    return HString::intern(bytes);
}

const HString* ZOFFReader::popName()
{
    return nameOf(popString());
}

const HString* ZOFFReader::popNameOrNull()
{
    if (m_depth > 0 && m_stack[m_depth - 1].isNull()) {
        --m_depth;
        return nullptr;
    }
    return popName();
}
