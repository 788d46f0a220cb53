#include "zoff/ZOFFSymbol.h"

#include "support/HString.h"
#include "zoff/ZOFFScope.h"

void ZOFFSymbol::setScope(ZOFFScope* scope)
{
    if (m_scope)
        return;
    m_scope = scope;
    const HString* name = getName();
    if (scope && name)
        scope->symbols().set(name, this);
}

ZOFFEvaluation ZOFFSymbol::evaluate() const
{
    if (!m_value)
        return ZOFFEvaluation::failure("undefined symbol " +
                                       (m_name ? std::string(m_name->view()) : std::string()));
    ZOFFEvaluation result = m_value->evaluate();
    result.codeletIndex = m_codeletIndex;
    result.patchable = m_patchable;
    result.patched = m_patched;
    return result;
}
