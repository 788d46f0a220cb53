#include "zoff/ZOFFType.h"

#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"
#include "zoff/ZOFFTypeName.h"
#include "zoff/limits.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int64_t MaxSize = std::numeric_limits<int32_t>::max();

[[noreturn]] void outOfRange()
{
    throw HException("bad object file: operand value error (constant out of range)");
}

int32_t arraySize(const ZOFFType* element, int64_t count)
{
    if (count < 0 || count > MaxSize || (element->size() > 0 && count > MaxSize / element->size()))
        outOfRange();
    return int32_t(element->size() * count);
}

} // namespace

ZOFFType::ZOFFType(int32_t size, int depth)
    : ZOFFObject(ZOFFKind::Type), m_depth(uint16_t(depth)), m_size(size)
{
    if (depth > ZOFFLimits::MaxNesting)
        throw HException("bad object file: types nested too deeply");
}

const HString* ZOFFType::getName() const
{
    if (!m_name) {
        ZOFFTypeName name;
        name.add(this);
        const HString* printed = HString::intern(name.text());
        // A pointer without its target will have another name later.
        if (!name.incomplete())
            m_name = printed;
        return printed;
    }
    return m_name;
}

void ZOFFTypeName::add(const ZOFFType* type)
{
    if (!type) {
        m_incomplete = true;
        return;
    }
    while (!type->m_name && type->isQualified())
        type = static_cast<const ZOFFQualifiedType*>(type)->baseType();
    if (type->m_visiting) {
        m_text += type->isStruc() ? "{...}" : type->isFunction() ? "(...)" : "...";
        return;
    }
    if (m_nesting >= ZOFFLimits::TypeNameNesting || ++m_parts > ZOFFLimits::TypeNameParts || isFull()) {
        if (!isFull() || !m_text.ends_with("..."))
            m_text += "...";
        return;
    }
    if (type->m_name) {
        m_text += type->m_name->view();
        return;
    }
    struct Visit {
        bool& visiting;
        int& nesting;
        Visit(bool& flag, int& level) : visiting(flag), nesting(level)
        {
            visiting = true;
            ++nesting;
        }
        ~Visit()
        {
            visiting = false;
            --nesting;
        }
    } visit(type->m_visiting, m_nesting);
    type->printName(*this);
}

void ZOFFTypeName::add(std::string_view text)
{
    if (!isFull())
        m_text += text;
}

void ZOFFTypeName::addTypes(const PoolList<ZOFFSymbol*>& symbols)
{
    bool first = true;
    for (const ZOFFSymbol* symbol : symbols) {
        if (!first)
            add(", ");
        first = false;
        if (isFull())
            return;
        if (symbol->type())
            add(symbol->type());
    }
}

bool ZOFFTypeName::isFull() const
{
    return m_text.size() > ZOFFLimits::TypeNameLength;
}

void ZOFFSimpleType::printName(ZOFFTypeName& out) const
{
    out.add(m_simpleKind == ZOFFTag::Int ? "INT(" : "UNSIGNED(");
    out.add(std::to_string(size()));
    out.add(")");
}

void ZOFFFloatType::printName(ZOFFTypeName& out) const
{
    out.add("FLOAT(");
    out.add(std::to_string(size()));
    out.add(")");
}

void ZOFFUntypedType::printName(ZOFFTypeName& out) const
{
    out.add("VOID");
}

ZOFFArrayType::ZOFFArrayType(ZOFFType* element, int64_t count)
    : ZOFFType(arraySize(element, count), element->depth() + 1), m_element(element), m_count(int32_t(count))
{
}

void ZOFFArrayType::printName(ZOFFTypeName& out) const
{
    out.add(m_element);
    out.add("[");
    out.add(std::to_string(m_count));
    out.add("]");
}

ZOFFCountedArrayType::ZOFFCountedArrayType(ZOFFType* counter, ZOFFType* element, int32_t count)
    : ZOFFType(element->size(), std::max(counter->depth(), element->depth()) + 1), m_counter(counter),
      m_count(count), m_element(element)
{
}

void ZOFFCountedArrayType::printName(ZOFFTypeName& out) const
{
    out.add(m_counter);
    out.add("::[");
    out.add(m_element);
    out.add("]");
}

int ZOFFPtrType::setTarget(ZOFFType* target)
{
    int steps = 0;
    for (ZOFFType* at = target; at && at->isPtr(); at = static_cast<ZOFFPtrType*>(at)->m_target) {
        if (at == this)
            throw HException("bad object file: pointer to itself");
        if (++steps >= ZOFFLimits::MaxNesting)
            throw HException("bad object file: types nested too deeply");
    }
    m_target = target;
    return steps;
}

void ZOFFPtrType::printName(ZOFFTypeName& out) const
{
    out.add(m_target);
    out.add("*");
}

ZOFFQualifiedType::ZOFFQualifiedType(ZOFFType* base, ZOFFTag qualifier)
    : ZOFFType(base->size(), base->depth() + 1), m_qualifier(qualifier), m_base(base)
{
    m_name = base->name();
}

void ZOFFQualifiedType::printName(ZOFFTypeName& out) const
{
    out.add(m_base);
}

ZOFFField* ZOFFStrucType::findField(const HString* name) const
{
    auto found = std::find_if(m_fields.begin(), m_fields.end(),
                              [name](const ZOFFField* field) { return field->getName() == name; });
    return found == m_fields.end() ? nullptr : *found;
}

void ZOFFStrucType::printName(ZOFFTypeName& out) const
{
    out.add("{ ");
    for (const ZOFFField* field : m_fields) {
        if (field->type())
            out.add(field->type());
        out.add(" ");
        if (field->getName())
            out.add(field->getName()->view());
        out.add("; ");
        if (out.isFull())
            return;
    }
    out.add(" }");
}

void ZOFFFunctionType::printName(ZOFFTypeName& out) const
{
    out.add("(");
    out.addTypes(m_in);
    out.add(")");
    if (!m_out.empty()) {
        out.add("->(");
        out.addTypes(m_out);
        out.add(")");
    }
}

void ZOFFMemberFunctionType::printName(ZOFFTypeName& out) const
{
    out.add(m_class);
    out.add("::");
    ZOFFFunctionType::printName(out);
}
