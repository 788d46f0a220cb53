// One element of a memory map. Numbers are stored as text and read with automatic base ("0x" is
// hexadecimal, a leading "0" octal); setting one writes "0x" and hexadecimal digits.
#pragma once

#include "project/xml/XMLNode.h"

#include <QString>

#include <cstdint>

class MemoryMapElement : public XMLElement {
public:
    enum ElementType {
        Root,
        MemorySegment,
        ProgramSection,
        RegisterGroup,
        Register,
        BitField,
        Enum,
        Processor,
        Unsupported
    };

    explicit MemoryMapElement(const char* tagName);

    void setTagName(const char* tagName) override;
    ElementType elementType() const { return m_type; }
    const char* elementTypeAsString() const;

// Text attributes: present or not, the text (null when absent), and a new text.
#define MEMORY_MAP_TEXT(Has, get, Set, attributeName)                                                        \
    bool Has() const                                                                                         \
    {                                                                                                        \
        return hasAttribute(attributeName);                                                                  \
    }                                                                                                        \
    QString get() const                                                                                      \
    {                                                                                                        \
        return attributeText(attributeName);                                                                 \
    }                                                                                                        \
    void Set(const QString& text)                                                                            \
    {                                                                                                        \
        setText(attributeName, text);                                                                        \
    }
// Number attributes: 0 when absent or no number of 32 bits.
#define MEMORY_MAP_NUMBER(Has, get, Set, attributeName)                                                      \
    bool Has() const                                                                                         \
    {                                                                                                        \
        return hasAttribute(attributeName);                                                                  \
    }                                                                                                        \
    uint32_t get() const                                                                                     \
    {                                                                                                        \
        return number(attributeName);                                                                        \
    }                                                                                                        \
    void Set(uint32_t value)                                                                                 \
    {                                                                                                        \
        setNumber(attributeName, value);                                                                     \
    }

    MEMORY_MAP_TEXT(hasName, name, setName, "name")
    // The text of `start`: a number, or "+" and a number that counts from the enclosing element.
    MEMORY_MAP_TEXT(hasStart, start, setStart, "start")
    void setStart(uint32_t address)
    {
        setNumber("start", address);
    }
    MEMORY_MAP_NUMBER(hasAlignment, alignment, setAlignment, "alignment")
    MEMORY_MAP_TEXT(hasAddressSymbol, addressSymbol, setAddressSymbol, "address_symbol") // linker symbols
    MEMORY_MAP_TEXT(hasSizeSymbol, sizeSymbol, setSizeSymbol, "size_symbol")
    MEMORY_MAP_TEXT(hasRunin, runin, setRunin, "runin")     // the section in which the content runs
    MEMORY_MAP_TEXT(hasAccess, access, setAccess, "access") // "ReadOnly", "WriteOnly", "None"; else both
    MEMORY_MAP_TEXT(hasEndian, endian, setEndian, "endian")
    MEMORY_MAP_TEXT(hasInputSections, inputSections, setInputSections, "inputsections")
    MEMORY_MAP_TEXT(hasAddressSpace, addressSpace, setAddressSpace, "addressSpace")
    MEMORY_MAP_NUMBER(hasFill, fill, setFill, "fill")
    MEMORY_MAP_TEXT(hasRegisterType, registerType, setRegisterType, "register_type")
#undef MEMORY_MAP_TEXT
#undef MEMORY_MAP_NUMBER

    // Bytes (bits of a BitField). A Register without the attribute takes the size of its type.
    bool hasSize() const
    {
        return hasAttribute("size");
    }
    uint32_t size() const;
    void setSize(uint32_t size)
    {
        setNumber("size", size);
    }

    bool hasLoad() const
    {
        return hasAttribute("load");
    }
    bool load() const; // the text is "Yes"
    void setLoad(bool on)
    {
        setText("load", on ? QStringLiteral("Yes") : QStringLiteral("No"));
    }

    bool isReadOnly() const
    {
        return access() == QLatin1String("ReadOnly");
    }
    bool isWriteOnly() const
    {
        return access() == QLatin1String("WriteOnly");
    }
    bool isNone() const
    {
        return access() == QLatin1String("None");
    }

    // The address in memory, found at loading; 0 when the element has no `start`.
    uint32_t address() const
    {
        return m_address;
    }
    bool hasAddress() const
    {
        return m_hasAddress;
    }
    // Reads `start` against the address of the enclosing element, and answers the base for the
    // children, which is that of this element when it has one.
    uint32_t updateAddress(uint32_t base);
    // `start` and `size` are absent, or numbers of 32 bits.
    bool numbersAreValid() const;

    // Text with which the debugger shows this register or bit field; empty for anything else.
    QString getRegisterExpression() const;

    // Children by address, for a walk in sorted order: linkChildren() sorts them, then follow
    // firstSorted() and nextSorted(). clearLinks() undoes it.
    void linkChildren();
    void clearLinks();
    MemoryMapElement* firstSorted() const
    {
        return m_firstSorted;
    }
    MemoryMapElement* nextSorted() const
    {
        return m_nextSorted;
    }
    // Negative, zero or positive, by address.
    static int cmp(const MemoryMapElement* a, const MemoryMapElement* b);

    // Every element of a memory map is of this class.
    MemoryMapElement* firstMapElement() const
    {
        return static_cast<MemoryMapElement*>(firstElement());
    }
    MemoryMapElement* nextMapElement() const
    {
        return static_cast<MemoryMapElement*>(nextElement());
    }

private:
    uint32_t number(const char* name) const;
    void setNumber(const char* name, uint32_t value);
    void setText(const char* name, const QString& text);

    ElementType m_type;
    bool m_hasAddress = false;
    uint32_t m_address = 0;
    MemoryMapElement* m_firstSorted = nullptr;
    MemoryMapElement* m_nextSorted = nullptr;
};
