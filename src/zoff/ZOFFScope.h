// A scope: names, inner scopes, and the range of code in which they hold.
#pragma once

#include "support/HString.h"
#include "zoff/PoolContainers.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFTags.h"

class ZOFFMarkerExpr;
class ZOFFSymbol;

class ZOFFScope : public ZOFFObject {
public:
    using Symbols = PoolTable<const HString*, ZOFFObject*, HString::Earlier>;

    // The kind is SCOPE_FUNCTION or SCOPE_BLOCK; start and end may be null.
    explicit ZOFFScope(ZOFFTag kind, ZOFFMarkerExpr* start = nullptr, ZOFFMarkerExpr* end = nullptr);

    // Stores the parent and appends this scope to its children, at each call. Throws HException when
    // scopes are nested too deeply.
    void setScope(ZOFFScope* parent) override;
    ZOFFScope* scope() const { return m_scope; } // may be null

    // Ordered by when a name was first seen.
    Symbols& symbols() { return m_symbols; }
    const Symbols& symbols() const { return m_symbols; }
    // In creation order.
    const PoolList<ZOFFScope*>& children() const { return m_children; }
    ZOFFMarkerExpr* start() const { return m_start; }
    ZOFFMarkerExpr* end() const { return m_end; }
    // Null unless this is a function's scope.
    ZOFFSymbol* functionSymbol() const { return m_functionSymbol; }
    void setFunctionSymbol(ZOFFSymbol* symbol) { m_functionSymbol = symbol; }

protected:
    explicit ZOFFScope(ZOFFKind kind);

private:
    uint16_t m_depth = 0;
    ZOFFScope* m_scope = nullptr;
    Symbols m_symbols;
    PoolList<ZOFFScope*> m_children;
    ZOFFMarkerExpr* m_start = nullptr;
    ZOFFMarkerExpr* m_end = nullptr;
    ZOFFSymbol* m_functionSymbol = nullptr;
};
