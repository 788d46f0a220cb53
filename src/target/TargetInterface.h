// The connection to one target: a board behind an adapter, or a simulator. One set of operations for
// connection, run control, memory and load files, for the session, the download engine and the
// debugger. Operations report failure by throwing HException.
//
// Erase, program, verify and upload go to the DownloadEngine. The script hooks are in TargetScripts.cpp, the
// object that scripts see in TargetScriptObject.cpp.
#pragma once

#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "script/engine/ESClass.h"
#include "script/engine/ESValue.h"
#include "target/TargetInterfacePropertyValue.h"
#include "target/download/DownloadEngine.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

#include <QString>
#include <QStringList>

class LoadFileInterface;
class LoadFileSectionInterface;
class LoadFileSections;
class ProjectElement;
class TargetMemoryInterface;
class TargetRegisterInterface;

class TargetInterface : public ESClass, private DownloadTarget {
public:
    enum Capability {
        CanAccessMemory = 0x3,
        CanLoad = 0x4,
        CanVerify = 0x8,
        CanReset = 0x10,
        CanDebug = 0x20,
        CanExecute = 0x40,
        HasEraseAll = 0x100, // offers the property "Erase All"
        CanAttach = 0x400,
    };

    // The helpers are not owned and outlive the target.
    TargetInterface(int capabilities, const char* name, TargetInterfaceHelperFunctions* helpers);
    ~TargetInterface() override;

    // A call of one of the script object's functions; the function object's builtin id says which.
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

    const QString& name() const override { return m_name; }

    virtual void connect(bool reset) = 0;
    virtual void disconnect() = 0;
    virtual bool isConnected() const = 0;
    virtual bool isStopped() = 0;
    virtual void debugBegin();
    virtual void debugEnd();
    virtual bool canBeExternallyDisconnected() const { return false; }
    virtual bool hasBeenExternallyDisconnected() { return false; }

    // Owned by the target; null when there is none. Good until it disconnects.
    TargetMemoryInterface* codeMemory() override = 0;
    virtual TargetMemoryInterface* dataMemory() = 0;
    TargetMemoryInterface* eeMemory() override { return nullptr; }
    virtual QStringList allMemoryInterfaces() { return {}; }
    virtual void selectMemoryInterface(const QString&) {}
    virtual void flushMemoryInterfaces() {}
    virtual TargetRegisterInterface* registers() { return nullptr; }
    virtual unsigned cycleCount() const { return 0; }
    virtual bool isCompatibleWith(const QString&) const { return true; }
    virtual int capabilities() const { return m_capabilities; }

    // `stop` keeps the program from running, `loader` readies the target for a load.
    virtual void reset(bool stop, bool loader) = 0;
    virtual void go() = 0;
    virtual void start(bool setPC, unsigned pc) = 0; // pc is a byte address
    virtual void attach();
    virtual void step() = 0;
    virtual void stop() = 0;
    virtual void clear() = 0;

    // Called when the load depth leaves 0, and before it comes back to 0.
    virtual void loadBeginInitial() {}
    virtual void loadEndFinal() {}

    // What the download engine does; see there.
    virtual void eraseAll();
    virtual void eraseBytes(uint32_t address, unsigned count, int memory);
    virtual void lockAll();
    virtual void lockBytes(uint32_t address, unsigned count, int memory);
    virtual void unlockAll();
    virtual void unlockBytes(uint32_t address, unsigned count, int memory);
    virtual void eraseLoadFile(LoadFileInterface* file, const char* name, bool patched);
    virtual void downloadLoadFile(LoadFileInterface* file, const char* name, bool patched);
    virtual void uploadLoadFile(LoadFileInterface* file, const char* name, LoadFileSections& result);
    virtual void checkLoadFileFits(LoadFileInterface* file);
    virtual bool verifyLoadFile(LoadFileInterface* file, const char* name, bool patched, bool erasedOnly);
    virtual void patchLoadFile(LoadFileInterface*) {}

    // Adds the object "TargetInterface" to a context's global scope; returns it, so that a target can add
    // functions of its own, with ids from FirstFreeScriptId. The target must outlive the context.
    virtual ESObject* installScriptObject(ESContext* context);

    virtual bool loaderEraseAll() const;

    // Hints for a graphical front end: the name of an icon, and bold face.
    virtual QString getObjectPixmap(bool) const { return {}; }
    virtual bool getObjectBold() const { return isConnected(); }

    // The hooks return false when the project has no script for the event.
    virtual bool executeResetScript(bool loader);
    virtual bool executeAttachScript();
    virtual bool executeRunScript();
    virtual bool executeStopScript();
    virtual bool executeDebugBeginScript();
    virtual bool executeDebugEndScript();
    virtual bool executeConnectScript();
    virtual bool executeDisconnectScript();

    // Appends the target's own settings; the values stay the target's.
    virtual void getProperties(PropertyValueList& list);

    virtual unsigned getNumInterrupts() { return 0; }
    virtual void getInterruptInformation(unsigned, QString&) {}
    virtual void raiseInterrupt(int) {}
    virtual QStringList getMenuEntries() { return {}; }
    virtual void executeMenuEntry(const QString&) {}
    virtual unsigned long serialNumber() const { return 0; }
    QString addressString(unsigned address) override;
    virtual void syncSettingsWithProject(ProjectElement* project, const QString& configuration);

    // A load is a nested bracket: only the outermost pair prepares the target and puts it back. The
    // depth goes down in every case, also when the preparation or loadEndFinal() throws.
    void loadBegin() final;
    void loadEnd() final;
    int loadDepth() const { return m_loadDepth; }
    // Forgets a load that failed, without a word to the target.
    void abandonLoad() { m_loadDepth = 0; }

    // Where the last failed verifyLoadFile() found the first difference, in words for a user.
    const QString& verifyMismatch() const { return m_download.verifyMismatch(); }

    void reconnect();
    QString deviceId() const { return m_deviceId.propertyValue(); }
    void setDeviceId(const QString& text) { m_deviceId.setPropertyValue(text); }
    void setLoaderEraseAll(bool on);

    // Called while long operations run, so that the caller's event loop stays alive.
    void progressing() const { m_progressing(); }
    void setProgressing(void (*function)()) { m_progressing = function; }

    // A setting of the project, macros expanded if asked for; a null string without a project.
    QString propertyValue(const PropertyClass* property, bool expanded) const;
    // The path of the project's memory map, a null string without a project.
    QString memoryMapFile();
    // The text of the project's script file, from a process-wide cache.
    QString targetScript();

protected:
    static constexpr int FirstFreeScriptId = 20;

    TargetInterfaceHelperFunctions* helpers() const { return m_helpers; }
    ProjectElement* project() const { return m_project; }
    const QString& configuration() const { return m_configuration; }
    // A hook of the given project property; a null prefix sends no message, a group title puts the
    // hook into a message group.
    bool executeScript(const char* property, const char* messagePrefix, bool flushFirst,
                       const char* group = nullptr);

private:
    static void noop() {}
    int sizeDisplayUnit() override;

    QString m_name;
    int m_capabilities;
    TargetInterfaceHelperFunctions* m_helpers;
    PropertyClass m_deviceIdClass;
    PropertyClass m_eraseAllClass;
    TargetInterfacePropertyValue m_deviceId;
    TargetInterfacePropertyValue m_eraseAll;
    ProjectElement* m_project = nullptr;
    QString m_configuration;
    int m_loadDepth = 0;
    QString m_targetScriptName;
    DownloadEngine m_download;
    void (*m_progressing)() = noop;
};
