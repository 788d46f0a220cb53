#include "script/engine/ESClass.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"

ESClass::~ESClass() = default;

ESValue ESClass::get(ESContext*, ESObject* object, ESString* name)
{
    return ESContext::plainGet(object, name);
}

void ESClass::put(ESContext*, ESObject* object, ESString* name, const ESValue& value)
{
    ESContext::plainPut(object, name, value);
}

bool ESClass::canPut(ESContext*, ESObject*, ESString*)
{
    return false;
}

bool ESClass::hasProperty(ESContext*, ESObject*, ESString*)
{
    return false;
}

bool ESClass::deleteProperty(ESContext*, ESObject*, ESString*)
{
    return false;
}

void ESClass::defaultValue(ESContext*, ESObject*, int, ESValue* result)
{
    *result = g_undefined;
}

void ESClass::call(ESContext*, ESObject*, ESObject*, int, ESValue* argv)
{
    argv[0] = g_undefined;
}

ESObject* ESClass::construct(ESContext*, ESObject*, int, ESValue*)
{
    return nullptr;
}
