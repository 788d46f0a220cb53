// The script hooks of TargetInterface: a project's one-line scripts for events, and the file of helper
// functions that they call.

#include "project/BuildSystem.h"
#include "project/CachedTextFile.h"
#include "project/ProjectElement.h"
#include "script/host/ScriptSystem.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "target/TargetInterface.h"

namespace {
constexpr int GroupCount = 0x4000; // of beginGroup: a group of the hooks
} // namespace

bool TargetInterface::executeResetScript(bool loader)
{
    return executeScript("target_reset_script", "Executing reset script ", false,
                         loader ? "Preparing target for download" : "Preparing target for user application");
}

bool TargetInterface::executeAttachScript()
{
    return executeScript("target_attach_script", "Executing attach script ", false);
}

bool TargetInterface::executeRunScript()
{
    return executeScript("target_go_script", "Executing run script ", true);
}

bool TargetInterface::executeStopScript()
{
    return executeScript("target_stop_script", "Executing stop script ", true);
}

bool TargetInterface::executeConnectScript()
{
    return executeScript("target_connect_script", "Executing connect script ", true);
}

bool TargetInterface::executeDisconnectScript()
{
    return executeScript("target_disconnect_script", "Executing disconnect script ", true);
}

bool TargetInterface::executeDebugBeginScript()
{
    return executeScript("target_debug_begin_script", "Executing debug begin script ", true);
}

bool TargetInterface::executeDebugEndScript()
{
    return executeScript("target_debug_end_script", nullptr, true);
}

bool TargetInterface::executeScript(const char* property, const char* messagePrefix, bool flushFirst,
                                    const char* group)
{
    if (flushFirst)
        flushMemoryInterfaces();
    if (!m_project)
        return false;
    QString script = propertyValue(buildSystem->findPropertyClass(QLatin1String(property)), false);
    if (script.isEmpty())
        return false;
    if (group)
        m_helpers->beginGroup(QLatin1String(group), GroupCount);
    Bracket grouped([&] {
        if (group)
            m_helpers->endGroup(QString());
    });
    if (messagePrefix)
        m_helpers->message(QLatin1String(messagePrefix) + script);
    if (!scriptSystem)
        throw HException(QLatin1String("no script system for target script ") + script);
    // The helper functions are defined again before every hook, and the property's line calls them.
    QString helperFunctions = targetScript();
    scriptSystem->setSourceName(m_targetScriptName.isEmpty() ? QLatin1String(property) : m_targetScriptName);
    scriptSystem->execute(helperFunctions + QLatin1Char('\n') + script, false);
    return true;
}

QString TargetInterface::targetScript()
{
    // One for the process: every target of a session belongs to the same project.
    static QString cachedPath;
    static QString cachedText;
    if (!m_project || m_configuration.isEmpty())
        return cachedText;
    ProjectElement* file =
        buildSystem->findFileOfType(m_project, m_configuration, QStringLiteral("Target Script"));
    if (!file)
        file = buildSystem->findFileOfType(m_project, m_configuration, QStringLiteral("Reset Script"));
    if (file && file->path().osPathQString() != cachedPath) {
        m_helpers->message(QLatin1String("Loading target script file ") + file->path().fileName());
        cachedText = CachedTextFile::read(file->path().osPathQString(), nullptr);
        cachedPath = file->path().osPathQString();
        m_targetScriptName = file->path().fileName();
    }
    return cachedText;
}
