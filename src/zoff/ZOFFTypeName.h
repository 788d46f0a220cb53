// The printed name of a type while it is put together. Types may mention themselves and one another, so
// the name is bounded in nesting, in parts and in length; where it is cut it says "...".
#pragma once

#include "zoff/PoolContainers.h"

#include <string>
#include <string_view>

class ZOFFSymbol;
class ZOFFType;

class ZOFFTypeName {
public:
    // The name from the file or else the printed one. Null, a pointer's missing target, adds nothing.
    void add(const ZOFFType* type);
    void add(std::string_view text);
    // The names of the symbols' types, joined by ", ".
    void addTypes(const PoolList<ZOFFSymbol*>& symbols);

    const std::string& text() const { return m_text; }
    bool isFull() const;
    // A pointer without a target was met.
    bool incomplete() const { return m_incomplete; }

private:
    std::string m_text;
    int m_nesting = 0;
    int m_parts = 0;
    bool m_incomplete = false;
};
