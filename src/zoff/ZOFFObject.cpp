#include "zoff/ZOFFObject.h"

#include "zoff/ZOFFScope.h"

void ZOFFObject::setScope(ZOFFScope* scope)
{
    if (m_scope)
        return;
    m_scope = scope;
    const HString* name = getName();
    if (scope && name)
        scope->symbols()[name] = this;
}
