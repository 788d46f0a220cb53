#include "target/TargetInterface.h"

#include "project/BuildSystem.h"
#include "project/EnvironmentSettings.h"
#include "project/ProjectSystem.h"
#include "project/PropertyValue.h"
#include "support/Bracket.h"
#include "support/PlatformConstants.h"

TargetInterface::TargetInterface(int capabilities, const char* name, TargetInterfaceHelperFunctions* helpers)
    : ESClass("TargetInterface"), m_name(QString::fromLatin1(name)), m_capabilities(capabilities),
      m_helpers(helpers),
      m_deviceIdClass("device_id", PropertyClass::String, QString(), QString(), "Target", "Device Type",
                      "The detected type of the currently connected target device."),
      m_eraseAllClass("loaderEraseAll", PropertyClass::Boolean, QString(), QString(), "Loader", "Erase All",
                      "Erase all erasable memory rather than individual segments when downloading."),
      m_deviceId(&m_deviceIdClass), m_eraseAll(&m_eraseAllClass), m_download(*this, helpers)
{
    m_deviceIdClass.setReadOnly(true);
}

TargetInterface::~TargetInterface() = default;

void TargetInterface::debugBegin()
{
    executeDebugBeginScript();
}

void TargetInterface::debugEnd()
{
    executeDebugEndScript();
}

void TargetInterface::attach()
{
    executeAttachScript();
}

bool TargetInterface::loaderEraseAll() const
{
    return m_eraseAll.toBool();
}

void TargetInterface::setLoaderEraseAll(bool on)
{
    m_eraseAll.setValue(on);
}

void TargetInterface::getProperties(PropertyValueList& list)
{
    if (isConnected())
        list.appendUnique(&m_deviceId);
    if (capabilities() & HasEraseAll)
        list.appendUnique(&m_eraseAll);
}

QString TargetInterface::addressString(unsigned address)
{
    return QString::asprintf(Get_ADDRESS_FORMAT(), address);
}

void TargetInterface::syncSettingsWithProject(ProjectElement* project, const QString& configuration)
{
    m_project = project;
    m_configuration = configuration;
}

void TargetInterface::loadBegin()
{
    if (m_loadDepth++ > 0)
        return;
    Bracket depth([this] { --m_loadDepth; });
    m_download.forgetErased();
    loadBeginInitial();
    depth.dismiss();
}

void TargetInterface::loadEnd()
{
    Bracket depth([this] { --m_loadDepth; });
    if (m_loadDepth == 1)
        loadEndFinal();
}

void TargetInterface::reconnect()
{
    if (isConnected()) {
        disconnect();
        connect(true);
    }
}

QString TargetInterface::propertyValue(const PropertyClass* property, bool expanded) const
{
    if (!m_project || m_configuration.isEmpty())
        return {};
    if (expanded)
        return buildSystem->settingForExpanded(m_project, property, m_configuration);
    return projectSystem->settingFor(m_project, property, m_configuration, nullptr);
}

QString TargetInterface::memoryMapFile()
{
    QString result;
    if (m_project && !m_configuration.isEmpty())
        buildSystem->useMemoryMapFileForLink(m_project, m_configuration, result);
    return result;
}

int TargetInterface::sizeDisplayUnit()
{
    PropertyValue* entry = environment ? environment->findProperty("Environment/Size Display Unit") : nullptr;
    return entry ? entry->toInt() : 0;
}

void TargetInterface::eraseAll()
{
    m_download.eraseAll();
}

void TargetInterface::eraseBytes(uint32_t address, unsigned count, int memory)
{
    m_download.eraseBytes(address, count, memory);
}

void TargetInterface::lockAll()
{
    m_download.lockAll();
}

void TargetInterface::lockBytes(uint32_t address, unsigned count, int memory)
{
    m_download.lockBytes(address, count, memory);
}

void TargetInterface::unlockAll()
{
    m_download.unlockAll();
}

void TargetInterface::unlockBytes(uint32_t address, unsigned count, int memory)
{
    m_download.unlockBytes(address, count, memory);
}

void TargetInterface::eraseLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    m_download.eraseLoadFile(file, name, patched);
}

void TargetInterface::downloadLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    m_download.downloadLoadFile(file, name, patched);
}

void TargetInterface::uploadLoadFile(LoadFileInterface* file, const char* name, LoadFileSections& result)
{
    m_download.uploadLoadFile(file, name, result);
}

void TargetInterface::checkLoadFileFits(LoadFileInterface* file)
{
    m_download.checkLoadFileFits(file);
}

bool TargetInterface::verifyLoadFile(LoadFileInterface* file, const char* name, bool patched, bool erasedOnly)
{
    return m_download.verifyLoadFile(file, name, patched, erasedOnly);
}
