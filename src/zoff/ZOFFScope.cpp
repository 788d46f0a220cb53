#include "zoff/ZOFFScope.h"

#include "support/HException.h"
#include "zoff/ZOFFTags.h"
#include "zoff/limits.h"

ZOFFScope::ZOFFScope(ZOFFTag kind, ZOFFMarkerExpr* start, ZOFFMarkerExpr* end)
    : ZOFFObject(ZOFFKind::Scope), m_start(start), m_end(end)
{
    m_scopeKind = uint8_t(kind);
}

ZOFFScope::ZOFFScope(ZOFFKind kind) : ZOFFObject(kind)
{
    m_scopeKind = uint8_t(ZOFFTag::ScopeModule);
}

void ZOFFScope::setScope(ZOFFScope* parent)
{
    if (parent && parent->m_depth >= ZOFFLimits::MaxNesting)
        throw HException("bad object file: scopes nested too deeply");
    m_scope = parent;
    if (!parent)
        return;
    m_depth = uint16_t(parent->m_depth + 1);
    parent->m_children.push_back(this);
}
