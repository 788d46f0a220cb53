#include "project/memorymap/MemoryMapElement.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

namespace {

constexpr const char* TypeNames[] = {"Root",     "MemorySegment", "ProgramSection", "RegisterGroup",
                                     "Register", "BitField",      "Enum",           "Processor"};

MemoryMapElement::ElementType typeOf(const char* tagName)
{
    for (size_t i = 0; i < std::size(TypeNames); ++i)
        if (strcmp(tagName, TypeNames[i]) == 0)
            return MemoryMapElement::ElementType(i);
    return MemoryMapElement::Unsupported;
}

struct TypeSize {
    QLatin1String name;
    uint32_t size;
};

constexpr TypeSize TypeSizes[] = {
    {QLatin1String("unsigned char"), 1},  {QLatin1String("signed char"), 1},
    {QLatin1String("unsigned short"), 2}, {QLatin1String("short"), 2},
    {QLatin1String("unsigned int"), 4},   {QLatin1String("int"), 4},
    {QLatin1String("unsigned long"), 4},  {QLatin1String("long"), 4},
    {QLatin1String("float"), 4},
};

bool parse(const char* text, uint32_t& value)
{
    value = 0;
    while (*text == ' ')
        ++text;
    if (*text < '0' || *text > '9')
        return false;
    char* end = nullptr;
    unsigned long long number = strtoull(text, &end, 0);
    while (*end == ' ')
        ++end;
    if (*end || number > UINT32_MAX)
        return false;
    value = uint32_t(number);
    return true;
}

} // namespace

MemoryMapElement::MemoryMapElement(const char* tagName) : XMLElement(tagName), m_type(typeOf(tagName)) {}

void MemoryMapElement::setTagName(const char* tagName)
{
    XMLElement::setTagName(tagName);
    m_type = typeOf(tagName);
}

const char* MemoryMapElement::elementTypeAsString() const
{
    return m_type == Unsupported ? "Unsupported" : TypeNames[m_type];
}

uint32_t MemoryMapElement::number(const char* name) const
{
    uint32_t value = 0;
    const char* text = attribute(name);
    return text && parse(text, value) ? value : 0;
}

void MemoryMapElement::setNumber(const char* name, uint32_t value)
{
    setAttribute(name, ("0x" + QByteArray::number(value, 16)).constData());
}

void MemoryMapElement::setText(const char* name, const QString& text)
{
    setAttribute(name, text.toUtf8().constData());
}

uint32_t MemoryMapElement::size() const
{
    if (hasSize())
        return number("size");
    if (m_type == Register) {
        QString type = registerType();
        for (const TypeSize& each : TypeSizes)
            if (type == each.name)
                return each.size;
    }
    return 0;
}

bool MemoryMapElement::load() const
{
    const char* text = attribute("load");
    return text && strcmp(text, "Yes") == 0;
}

uint32_t MemoryMapElement::updateAddress(uint32_t base)
{
    const char* text = attribute("start");
    m_hasAddress = text != nullptr;
    m_address = 0;
    if (!text)
        return base;
    bool relative = *text == '+';
    parse(relative ? text + 1 : text, m_address);
    if (relative)
        m_address += base;
    return m_address;
}

bool MemoryMapElement::numbersAreValid() const
{
    uint32_t value;
    const char* start = attribute("start");
    const char* size = attribute("size");
    return (!start || parse(*start == '+' ? start + 1 : start, value)) && (!size || parse(size, value));
}

QString MemoryMapElement::getRegisterExpression() const
{
    if (m_type == Register) {
        QString type = hasRegisterType() ? registerType() : QStringLiteral("unsigned char");
        return QStringLiteral("*(register %1;*)0x%2").arg(type).arg(m_address, 0, 16);
    }
    const auto* owner = m_type == BitField && parent()
                            ? static_cast<const MemoryMapElement*>(parent()->asElement())
                            : nullptr;
    if (!owner || owner->m_type != Register)
        return QString();
    // A field's `start` is its lowest bit and its `size` the number of bits.
    uint32_t low = 0;
    const char* text = attribute("start");
    if (text)
        parse(*text == '+' ? text + 1 : text, low);
    uint32_t bits = hasSize() ? size() : 1;
    uint64_t mask = low < 32 ? ((uint64_t(1) << std::min(bits, 32u)) - 1) << low & 0xFFFFFFFF : 0;
    QString type = owner->hasRegisterType() ? owner->registerType() : QStringLiteral("unsigned char");
    return QStringLiteral("(register %1;)(%2 & 0x%3)")
        .arg(type, owner->getRegisterExpression())
        .arg(mask, 0, 16);
}

int MemoryMapElement::cmp(const MemoryMapElement* a, const MemoryMapElement* b)
{
    return a->m_address < b->m_address ? -1 : a->m_address > b->m_address ? 1 : 0;
}

void MemoryMapElement::linkChildren()
{
    clearLinks();
    std::vector<MemoryMapElement*> children;
    for (MemoryMapElement* child = firstMapElement(); child; child = child->nextMapElement())
        children.push_back(child);
    std::stable_sort(children.begin(), children.end(),
                     [](const auto* a, const auto* b) { return cmp(a, b) < 0; });
    MemoryMapElement** link = &m_firstSorted;
    for (MemoryMapElement* child : children) {
        *link = child;
        link = &child->m_nextSorted;
    }
}

void MemoryMapElement::clearLinks()
{
    m_firstSorted = nullptr;
    for (MemoryMapElement* child = firstMapElement(); child; child = child->nextMapElement())
        child->m_nextSorted = nullptr;
}
