// Moves load files to and from the memories of a target: erases, programs, verifies and uploads them, and
// erases, locks and unlocks whole memories and ranges. Each operation is a load of its own unless one is
// running, tells the session how far it is, and makes one pass over code memory and one over EEPROM.
//
// What the running load has erased is remembered, so that a load file that shares a block with an earlier
// one does not erase it again, and a differential download programs just what was erased.
#pragma once

#include "support/AddressRanges.h"

#include <QString>

#include <cstdint>

class LoadFileInterface;
class LoadFileSectionInterface;
class LoadFileSections;
class TargetInterfaceHelperFunctions;
class TargetMemoryInterface;

// What the engine asks of the target that it works for.
class DownloadTarget {
public:
    virtual const QString& name() const = 0;
    // Null when there is none.
    virtual TargetMemoryInterface* codeMemory() = 0;
    virtual TargetMemoryInterface* eeMemory() = 0;
    // The bracket around a load, which nests.
    virtual void loadBegin() = 0;
    virtual void loadEnd() = 0;
    virtual QString addressString(unsigned address) = 0;
    // How lengths are written: the unit format of kbSize.
    virtual int sizeDisplayUnit() = 0;

protected:
    ~DownloadTarget() = default;
};

class DownloadEngine {
public:
    // Neither is owned, and both outlive the engine.
    DownloadEngine(DownloadTarget& target, TargetInterfaceHelperFunctions* helpers);

    // A load begins that is in no other: nothing is erased yet.
    void forgetErased();

    // Throws HException, before anything is touched, when a section lies outside a known layout.
    void checkLoadFileFits(LoadFileInterface* file);
    // `name` is the load file's path, for messages; `patched` chooses the patch copy of each section.
    void eraseLoadFile(LoadFileInterface* file, const char* name, bool patched);
    void downloadLoadFile(LoadFileInterface* file, const char* name, bool patched);
    // False on a mismatch. With `erasedOnly` a memory that supports differential downloading is compared
    // only where this load erased it.
    bool verifyLoadFile(LoadFileInterface* file, const char* name, bool patched, bool erasedOnly);
    // Where the last failed verification found the first difference, in words for a user.
    const QString& verifyMismatch() const { return m_verifyMismatch; }
    // Appends what the memory holds at the file's sections.
    void uploadLoadFile(LoadFileInterface* file, const char* name, LoadFileSections& result);

    void eraseAll();
    void lockAll();
    void unlockAll();
    // `memory` 0 is code memory, any other value EEPROM.
    void eraseBytes(uint32_t address, unsigned count, int memory);
    void lockBytes(uint32_t address, unsigned count, int memory);
    void unlockBytes(uint32_t address, unsigned count, int memory);

private:
    // What is still to be done of a section or range.
    struct Part {
        uint32_t address;
        uint32_t length;
        const unsigned char* data; // null where zeros are meant, or no bytes play a part
    };
    struct Pass;
    struct Operation;
    // Does the first piece of a part, as large as suits the memory; returns its length, 0 to go no further.
    using Step = uint32_t (DownloadEngine::*)(Pass&, const Part&);
    using WholeMemory = void (TargetMemoryInterface::*)();
    static const Operation Erase, Download, Verify, Upload, Lock, Unlock;

    template <class Body> void asLoad(const QString& title, const Operation& operation, Body&& body);
    template <class Body> void forEachPass(Body&& body);
    template <class Body> static void erasing(Pass& pass, Body&& body);
    QString title(const Operation& operation, const char* name) const;
    bool differential(const TargetMemoryInterface& memory) const;
    void sectionMessage(const Operation& operation, const QString& name, uint32_t address, uint32_t length);
    void open(Pass& pass, const Operation& operation, uint64_t total);
    void advance(Pass& pass, uint64_t bytes);
    void close(Pass& pass);
    void checkCancelled(const Operation& operation);

    void walkSections(Pass& pass, LoadFileInterface* file, bool patched, bool touchedOnly);
    bool walkTouched(Pass& pass, const Part& part);
    bool walk(Pass& pass, Part part);
    uint32_t eraseStep(Pass& pass, const Part& part);
    uint32_t downloadStep(Pass& pass, const Part& part);
    uint32_t verifyStep(Pass& pass, const Part& part);
    uint32_t uploadStep(Pass& pass, const Part& part);
    uint32_t lockStep(Pass& pass, const Part& part);
    uint32_t unlockStep(Pass& pass, const Part& part);

    void uploadSection(Pass& pass, const LoadFileSectionInterface& section, LoadFileSections& result);
    void forAllMemory(const Operation& operation, WholeMemory act);
    void forRange(const Operation& operation, uint32_t address, unsigned count, int memory);

    DownloadTarget& m_target;
    TargetInterfaceHelperFunctions* m_helpers;
    AddressRanges m_touched[2]; // erased during the running load: code memory, EEPROM
    QString m_verifyMismatch;
};

// A length as "%1.%2 %3%4": whole part with commas, one truncated digit, unit, "B". The unit format
// is 0 for kB and MB of 1000, 1 for KB and MB of 1024, 2 for kiB and MiB.
QString kbSize(uint64_t length, int unitFormat);
