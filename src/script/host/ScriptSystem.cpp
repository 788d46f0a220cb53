#include "script/host/ScriptSystem.h"

ScriptSystem* scriptSystem = nullptr;

ScriptSystem::~ScriptSystem() = default;

QStringList ScriptSystem::executeWithResult(const QString&)
{
    return {};
}
