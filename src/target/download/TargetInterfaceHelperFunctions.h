// What a target calls back while it works: progress and messages. The session implements it.
#pragma once

#include <QString>

class TargetInterfaceHelperFunctions {
public:
    // -1 leaves `done` or `total` as it was; a null label or unit likewise. A label starts anew.
    virtual void progress(int done, int total, const char* label, const char* unit, bool final) = 0;
    virtual void message(const QString& text) = 0;
    virtual void error(const QString& text) = 0;
    virtual void message(const QString& text, int level) = 0;
    virtual void success(const QString& text) = 0;
    virtual void beginGroup(const QString& title, int count) = 0;
    virtual void endGroup(const QString& text) = 0;
    // True asks the running operation to stop.
    virtual bool checkCancelled() { return false; }
    virtual bool differentialDownloadEnabled() = 0;

protected:
    ~TargetInterfaceHelperFunctions() = default;
};

// The callbacks that every target of this process is made with; the program installs them before it makes
// the first one.
TargetInterfaceHelperFunctions* targetInterfaceHelperFunctions();
void installTargetInterfaceHelperFunctions(TargetInterfaceHelperFunctions& helpers);
