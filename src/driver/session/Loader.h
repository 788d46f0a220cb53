// The session: the selected target, the load files, and what is done with them in order. It takes
// the callbacks of the target layer and of the debugger, and tells its face what is to be told. Every failure
// is an HException with a text for the user.
#pragma once

#include "debug/monitor/DebuggerHelperFunctions.h"
#include "driver/session/SourceText.h"
#include "loadfile/LoadFileList.h"
#include "target/TargetInterface.h"
#include "target/download/TargetInterfaceHelperFunctions.h"

#include <QString>

#include <memory>

class SessionFace;

class Loader : public TargetInterfaceHelperFunctions, public DebuggerHelperFunctions {
public:
    // The face is not owned.
    explicit Loader(SessionFace& face) : m_face(face) {}
    virtual ~Loader() = default;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    // By class name or short name; an earlier target is disconnected and deleted.
    void setTarget(const QString& name);
    // One of the load file factory's own names, or null to go by the file's name.
    void setFiletype(const char* type) { m_filetype = type; }
    void setLoadAddress(unsigned address);
    unsigned loadAddress() const { return m_loadAddress; }
    void setEnableDifferentialDownload(bool on) { m_differentialDownload = on; }
    // What is told while the session runs: progress unless quiet, messages when verbose as well.
    void setVerbosity(bool quiet, bool verbose);

    // Reads a file and puts it behind the others.
    void addLoadFile(const QString& name);
    const LoadFileList& loadFiles() const { return m_loadFiles; }

    bool hasTargetInterface() const { return m_target != nullptr; }
    TargetInterface* targetInterface() const; // throws "No target selected"
    // With the project and configuration whose settings the target reads; both may be empty.
    void connectTarget(ProjectElement* project, const QString& configuration);
    void disconnectTarget();
    void resetTarget();
    // Brings the files into order. Throws HException when they overlap.
    void checkOverlap();
    void downloadLoadFiles();
    void verifyLoadFiles();

    // TargetInterfaceHelperFunctions. What a target reports through the last four never reaches the
    // user of this tool: the exceptions say it.
    void progress(int done, int total, const char* label, const char* unit, bool final) override;
    void message(const QString& text) override;
    bool differentialDownloadEnabled() override { return m_differentialDownload; }
    void error(const QString& text) override; // a warning; the session goes on
    void message(const QString&, int) override {}
    void success(const QString&) override {}
    void beginGroup(const QString&, int) override {}
    void endGroup(const QString&) override {}

    // DebuggerHelperFunctions.
    bool debuggerDisassemblyShowAddresses() override { return true; }
    bool debuggerDisassemblyShowLabels() override { return true; }
    bool debuggerDisassemblyShowSource() override { return true; }
    bool debuggerUseHardwareStep() override { return false; }
    // A warning on standard error; of a program that goes on provoking them not more than a hundred.
    void displayError(const QString& text) override;
    Path getDebugSourcePath(const Path& path) override;
    QString getDebugSourceText(const Path& path, int line) override;

    // In which state a download that did not come to its end has left the device; null when nothing was
    // changed, or all was done.
    QString deviceState() const;
    // One line about a load that went well: "OK: 3 files, 54 kB, verified, 0.52 s".
    void tellSummary(bool downloaded, bool verified, qint64 milliseconds);
    SessionFace& face() const { return m_face; }
    SourceText& sourceText() { return m_sourceText; }

private:
    TargetInterface* connectedTarget(const char* otherwise) const;

    SessionFace& m_face;
    std::unique_ptr<TargetInterface> m_target;
    unsigned m_loadAddress = 0;
    bool m_loadAddressGiven = false;
    LoadFileList m_loadFiles;
    const char* m_filetype = nullptr;
    bool m_differentialDownload = true;
    bool m_quiet = false;
    bool m_verbose = false;
    QString m_deviceState;    // while a download changes it
    QString m_programmedFile; // that is being programmed
    double m_donePart = 0;    // of it, in percent
    int m_total = 0;
    int m_warnings = 0;
    SourceText m_sourceText;
};
