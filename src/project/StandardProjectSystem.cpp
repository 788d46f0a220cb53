#include "project/StandardProjectSystem.h"

#include "project/BuildSystem.h"
#include "project/ProjectElement.h"
#include "project/PropertyClass.h"
#include "support/PlatformConstants.h"

namespace {

void appendPage(const BuildSystem* buildSystem, const char* page, PropertyClassList& list)
{
    if (buildSystem)
        for (PropertyClass* each : buildSystem->pageClasses(QString::fromLatin1(page)))
            list.appendUnique(each);
}

bool isCppSetting(const PropertyClass* propertyClass)
{
    return propertyClass->saveName().startsWith(QLatin1String("cpp_"));
}

// The C and the C++ settings share a page.
void appendCompilerPage(const BuildSystem* buildSystem, bool cpp, PropertyClassList& list)
{
    PropertyClassList page;
    appendPage(buildSystem, "C/C++", page);
    for (PropertyClass* each : page)
        if (isCppSetting(each) == cpp)
            list.appendUnique(each);
}

} // namespace

void StandardProjectSystem::appendCCompilerProperties(ProjectElement*, PropertyClassList& list)
{
    appendPage(buildSystem(), "Build", list);
    appendCompilerPage(buildSystem(), false, list);
}

void StandardProjectSystem::appendCppCompilerProperties(ProjectElement*, PropertyClassList& list)
{
    if (Get_TARGET_CPP())
        appendCompilerPage(buildSystem(), true, list);
}

void StandardProjectSystem::appendAssemblerProperties(ProjectElement*, PropertyClassList& list)
{
    appendPage(buildSystem(), "Assembler", list);
}

void StandardProjectSystem::appendLinkerProperties(ProjectElement*, PropertyClassList& list)
{
    appendPage(buildSystem(), "Linker", list);
    appendPage(buildSystem(), "External Build", list);
}

void StandardProjectSystem::appendArchiverProperties(ProjectElement*, PropertyClassList& list)
{
    appendPage(buildSystem(), "Staging", list);
    appendPage(buildSystem(), "Combining", list);
}

void StandardProjectSystem::appendTargetProperties(ProjectElement*, PropertyClassList& list)
{
    appendPage(buildSystem(), "Debugger", list);
}

void StandardProjectSystem::appendDefaultProjectValues(ProjectElement* project)
{
    setProperty(project, QStringLiteral("Platform"), QString::fromLatin1(Get_PLATFORM()),
                QStringLiteral("Common"));
}

void MAXQ30ProjectSystem::appendTargetProperties(ProjectElement* element, PropertyClassList& list)
{
    ZOFFProjectSystem::appendTargetProperties(element, list);
    appendPage(buildSystem(), "Target", list);
}
