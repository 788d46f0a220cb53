#include "target/download/DownloadEngine.h"

#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileSection.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "target/download/Comparison.h"
#include "target/download/TargetInterfaceHelperFunctions.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>

namespace {

constexpr int GroupCount = 0xc100; // of beginGroup: a group of this engine
constexpr int FailureLevel = 0x104;
constexpr int WholeMemorySteps = 10; // of the bar while there is no way to tell how far it has come

int progressCount(uint64_t bytes)
{
    return int(std::min<uint64_t>(bytes, INT_MAX));
}

QString quotedFileName(const char* name)
{
    return QLatin1Char('"') + QFileInfo(QFile::decodeName(name)).fileName() + QLatin1Char('"');
}

// Ends an operation that the session wants cancelled; a front end that offers cancelling catches it.
class OperationCancelled : public HException {
public:
    using HException::HException;
};

// What was read back from the target, over a buffer of its own.
class UploadLoadFileSection : public StandardLoadFileSection {
public:
    explicit UploadLoadFileSection(const LoadFileSectionInterface& like)
        : StandardLoadFileSection(like.name(), like.address(), like.length(), nullptr),
          m_buffer(new unsigned char[like.length()])
    {
        m_data = m_buffer.get();
    }
    unsigned char* buffer() { return m_buffer.get(); }

private:
    std::unique_ptr<unsigned char[]> m_buffer;
};

} // namespace

QString kbSize(uint64_t length, int unitFormat)
{
    struct Unit {
        uint64_t base;
        const char* small;
        const char* large; // above base squared
    };
    static constexpr Unit Units[] = {{1000, "k", "M"}, {1024, "K", "M"}, {1024, "ki", "Mi"}};
    const Unit& unit = Units[unitFormat == 1 || unitFormat == 2 ? unitFormat : 0];
    bool large = length > unit.base * unit.base;
    uint64_t divisor = large ? unit.base * unit.base : unit.base;
    QString whole = QString::number(length / divisor);
    for (qsizetype at = whole.size() - 3; at > 0; at -= 3)
        whole.insert(at, QLatin1Char(','));
    return QStringLiteral("%1.%2 %3B")
        .arg(whole)
        .arg(length % divisor * 10 / divisor)
        .arg(QLatin1String(large ? unit.large : unit.small));
}

// One kind of work: how it is called and how one piece of it is done.
struct DownloadEngine::Operation {
    const char* name;        // in the messages of a failure
    const char* label;       // of progress and sections
    const char* title;       // of the group
    const char* preposition; // between file and target
    Step step;
    bool cancellable = true;
};

const DownloadEngine::Operation DownloadEngine::Erase = {"Erase", "Erasing", "Erasing", "to",
                                                         &DownloadEngine::eraseStep};
const DownloadEngine::Operation DownloadEngine::Download = {"Download", "Programming", "Downloading", "to",
                                                            &DownloadEngine::downloadStep};
const DownloadEngine::Operation DownloadEngine::Verify = {"Verify", "Verifying", "Verifying", "on",
                                                          &DownloadEngine::verifyStep};
const DownloadEngine::Operation DownloadEngine::Upload = {
    "Upload", "Uploading", "Uploading", "from", &DownloadEngine::uploadStep, false};
const DownloadEngine::Operation DownloadEngine::Lock = {"Lock", "Locking", "Locking", "on",
                                                        &DownloadEngine::lockStep};
const DownloadEngine::Operation DownloadEngine::Unlock = {"Unlock", "Unlocking", "Unlocking", "on",
                                                          &DownloadEngine::unlockStep};

// One of the two walks of an operation.
struct DownloadEngine::Pass {
    TargetMemoryInterface& memory;
    bool ee;
    AddressRanges& touched;
    const Operation* operation = nullptr;
    uint64_t done = 0;
    uint64_t total = 0;
    bool differential = false;       // of a download: only what was erased is programmed
    bool compare = false;            // of an erase: only what differs is erased
    unsigned char* buffer = nullptr; // of an upload: where the next piece goes

    const LoadFileSections::List& sections(LoadFileInterface* file) const
    {
        LoadFileSections& all = file->loadFileSections();
        return ee ? all.eeSections() : all.sections();
    }
    uint64_t totalOf(LoadFileInterface* file) const
    {
        LoadFileSections& all = file->loadFileSections();
        return ee ? all.eelength() : all.length();
    }
};

DownloadEngine::DownloadEngine(DownloadTarget& target, TargetInterfaceHelperFunctions* helpers)
    : m_target(target), m_helpers(helpers)
{
}

void DownloadEngine::forgetErased()
{
    for (AddressRanges& ranges : m_touched)
        ranges.clear();
}

// The frame of every operation: a load, a message group around the body, and on failure or cancellation
// the operation's name in a message before the exception goes on. The load is closed first.
template <class Body>
void DownloadEngine::asLoad(const QString& title, const Operation& operation, Body&& body)
{
    m_target.loadBegin();
    const char* outcome = " failed";
    Bracket report([&] {
        QString text = QLatin1String(operation.name) + QLatin1String(outcome);
        m_helpers->message(text, FailureLevel);
        m_helpers->endGroup(text);
    });
    Bracket load([&] { m_target.loadEnd(); });
    m_helpers->beginGroup(title, GroupCount);
    try {
        body();
    } catch (const OperationCancelled&) {
        outcome = " cancelled";
        throw;
    }
    report.dismiss();
    m_helpers->endGroup(QString());
    load.end();
}

template <class Body> void DownloadEngine::forEachPass(Body&& body)
{
    if (TargetMemoryInterface* memory = m_target.codeMemory()) {
        Pass pass{*memory, false, m_touched[0]};
        body(pass);
    }
    if (TargetMemoryInterface* memory = m_target.eeMemory()) {
        Pass pass{*memory, true, m_touched[1]};
        body(pass);
    }
}

QString DownloadEngine::title(const Operation& operation, const char* name) const
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(QLatin1String(operation.title), quotedFileName(name), QLatin1String(operation.preposition),
             m_target.name());
}

bool DownloadEngine::differential(const TargetMemoryInterface& memory) const
{
    return m_helpers->differentialDownloadEnabled() && memory.supportsDifferentialDownloading();
}

void DownloadEngine::checkCancelled(const Operation& operation)
{
    if (operation.cancellable && m_helpers->checkCancelled())
        throw OperationCancelled(std::string(operation.name) + " cancelled");
}

void DownloadEngine::sectionMessage(const Operation& operation, const QString& name, uint32_t address,
                                    uint32_t length)
{
    QString text = QLatin1String(operation.label) + QLatin1Char(' ') +
                   kbSize(length, m_target.sizeDisplayUnit()) + QLatin1String(" of ");
    text += name.isEmpty() ? QLatin1String("addresses ") : name + QLatin1String(" addresses ");
    text += m_target.addressString(address) + QLatin1String(" -- ") +
            m_target.addressString(length ? address + (length - 1) : address);
    m_helpers->message(text);
}

void DownloadEngine::open(Pass& pass, const Operation& operation, uint64_t total)
{
    pass.operation = &operation;
    pass.done = 0;
    pass.total = total;
    if (total > 0)
        m_helpers->progress(0, progressCount(total), operation.label, "bytes", true);
}

void DownloadEngine::advance(Pass& pass, uint64_t bytes)
{
    pass.done += bytes;
    m_helpers->progress(progressCount(pass.done), -1, nullptr, nullptr, true);
}

// What was skipped still counts as done.
void DownloadEngine::close(Pass& pass)
{
    if (pass.done < pass.total)
        m_helpers->progress(progressCount(pass.total), -1, nullptr, nullptr, true);
    pass.done = pass.total;
}

// False when a step ended it before the part's end.
bool DownloadEngine::walk(Pass& pass, Part part)
{
    return forEachPiece(part.address, part.length, part.data,
                        [&](uint32_t address, uint32_t rest, const unsigned char* data) {
                            checkCancelled(*pass.operation);
                            uint32_t done = (this->*pass.operation->step)(pass, {address, rest, data});
                            if (done > 0)
                                advance(pass, done);
                            return done;
                        });
}

// The parts of a section that this load has erased, in their order.
bool DownloadEngine::walkTouched(Pass& pass, const Part& part)
{
    if (part.length == 0)
        return true;
    uint32_t last = part.address + (part.length - 1);
    for (const AddressRange& range : pass.touched) {
        uint32_t low = std::max(range.low, part.address);
        uint32_t high = std::min(range.high, last);
        if (low > high)
            continue;
        const unsigned char* data = part.data ? part.data + (low - part.address) : nullptr;
        if (!walk(pass, {low, high - low + 1, data}))
            return false;
    }
    return true;
}

void DownloadEngine::walkSections(Pass& pass, LoadFileInterface* file, bool patched, bool touchedOnly)
{
    for (const auto& section : pass.sections(file)) {
        sectionMessage(*pass.operation, QString::fromStdString(section->name()), section->address(),
                       section->length());
        Part part{section->address(), section->length(), section->data(patched)};
        if (!(touchedOnly ? walkTouched(pass, part) : walk(pass, part)))
            return;
    }
}

void DownloadEngine::checkLoadFileFits(LoadFileInterface* file)
{
    forEachPass([&](Pass& pass) {
        const AddressRanges& layout = pass.memory.addressRanges();
        if (layout.isEmpty())
            return;
        for (const auto& section : pass.sections(file)) {
            if (section->length() == 0)
                continue;
            uint32_t last = section->address() + (section->length() - 1);
            if (!layout.find(section->address(), last))
                throw HException(
                    QString::asprintf("The 0x%08X - 0x%08X load section does not fit the target description.",
                                      section->address(), last));
        }
    });
}

// eraseBytesBegin() and eraseBytesEnd() come in pairs, whatever happens between them.
template <class Body> void DownloadEngine::erasing(Pass& pass, Body&& body)
{
    pass.memory.eraseBytesBegin();
    Bracket bracket([&] { pass.memory.eraseBytesEnd(); });
    body();
    bracket.end();
}

void DownloadEngine::eraseLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    asLoad(title(Erase, name), Erase, [&] {
        forEachPass([&](Pass& pass) {
            uint64_t total = pass.totalOf(file);
            if (!pass.memory.erase() || total == 0)
                return;
            open(pass, Erase, total);
            pass.compare = differential(pass.memory);
            erasing(pass, [&] { walkSections(pass, file, patched, false); });
            close(pass);
        });
    });
}

// What this load has erased is passed over; else a block goes, as the memory reports it, unless a
// comparison finds that nothing there differs.
uint32_t DownloadEngine::eraseStep(Pass& pass, const Part& part)
{
    if (const AddressRange* erased = pass.touched.find(part.address))
        return uint32_t(std::min<uint64_t>(part.length, uint64_t(erased->high) - part.address + 1));
    if (pass.compare) {
        uint32_t piece = std::min(part.length, pass.memory.optimumVerifyBytesFragment());
        if (memoryMatches(pass.memory, part.address, piece, part.data))
            return piece;
    }
    uint32_t piece = std::min(part.length, pass.memory.optimumEraseBytesFragment());
    unsigned erasedAddress = part.address;
    unsigned erasedCount = piece;
    pass.memory.eraseBytes(part.address, piece, &erasedAddress, &erasedCount);
    if (erasedCount > 0)
        pass.touched.add(erasedAddress, erasedAddress + (erasedCount - 1), true);
    return piece;
}

void DownloadEngine::downloadLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    asLoad(title(Download, name), Download, [&] {
        forEachPass([&](Pass& pass) {
            open(pass, Download, pass.totalOf(file));
            pass.differential = differential(pass.memory);
            walkSections(pass, file, patched, pass.differential);
            close(pass);
        });
    });
}

uint32_t DownloadEngine::downloadStep(Pass& pass, const Part& part)
{
    if (!part.data) {
        uint32_t piece = std::min(part.length, pass.memory.optimumMemsetBytesFragment());
        pass.memory.memsetBytes(part.address, piece, 0);
        return piece;
    }
    uint32_t piece = std::min(part.length, pass.memory.optimumDownloadBytesFragment());
    bool last = pass.differential || pass.done + piece == pass.total;
    pass.memory.downloadBytes(part.address, piece, part.data, last);
    return piece;
}

bool DownloadEngine::verifyLoadFile(LoadFileInterface* file, const char* name, bool patched, bool erasedOnly)
{
    m_verifyMismatch.clear();
    asLoad(title(Verify, name), Verify, [&] {
        forEachPass([&](Pass& pass) {
            open(pass, Verify, pass.totalOf(file));
            if (m_verifyMismatch.isEmpty())
                walkSections(pass, file, patched, erasedOnly && differential(pass.memory));
            close(pass);
        });
        if (!m_verifyMismatch.isEmpty())
            m_helpers->message(QStringLiteral("Verify failed"), FailureLevel);
    });
    return m_verifyMismatch.isEmpty();
}

uint32_t DownloadEngine::verifyStep(Pass& pass, const Part& part)
{
    uint32_t piece = std::min(part.length, pass.memory.optimumVerifyBytesFragment());
    if (memoryMatches(pass.memory, part.address, piece, part.data))
        return piece;
    m_verifyMismatch = firstDifference(pass.memory, part.address, piece, part.data);
    return 0;
}

void DownloadEngine::uploadLoadFile(LoadFileInterface* file, const char* name, LoadFileSections& result)
{
    asLoad(title(Upload, name), Upload, [&] {
        if (TargetMemoryInterface* memory = m_target.codeMemory()) {
            Pass pass{*memory, false, m_touched[0]};
            open(pass, Upload, pass.totalOf(file));
            for (const auto& section : pass.sections(file))
                uploadSection(pass, *section, result);
        }
        m_helpers->message(QStringLiteral("Upload complete"));
    });
}

void DownloadEngine::uploadSection(Pass& pass, const LoadFileSectionInterface& section,
                                   LoadFileSections& result)
{
    m_helpers->message(QStringLiteral("uploading section %1: size 0x%2, addr 0x%3")
                           .arg(QString::fromStdString(section.name()), QString::number(section.length(), 16),
                                QString::number(section.address(), 16)));
    auto uploaded = std::make_unique<UploadLoadFileSection>(section);
    pass.buffer = uploaded->buffer();
    walk(pass, {section.address(), section.length(), nullptr});
    result.add(std::move(uploaded));
}

uint32_t DownloadEngine::uploadStep(Pass& pass, const Part& part)
{
    uint32_t piece = std::min(part.length, pass.memory.optimumUploadBytesFragment());
    pass.memory.uploadBytes(part.address, piece, pass.buffer);
    pass.buffer += piece;
    return piece;
}

// One step for each whole memory.
void DownloadEngine::forAllMemory(const Operation& operation, WholeMemory act)
{
    const bool erases = &operation == &Erase;
    asLoad(QLatin1String(operation.label) + QLatin1String(" All Memory"), operation, [&] {
        if (erases)
            for (AddressRanges& ranges : m_touched)
                ranges.add(0, UINT32_MAX, true);
        forEachPass([&](Pass& pass) {
            if (erases && !pass.memory.erase())
                return;
            checkCancelled(operation);
            std::string label =
                std::string(operation.label) + " entire " + (pass.ee ? "EEPROM" : "FLASH") + " memory";
            m_helpers->progress(0, WholeMemorySteps, label.c_str(), nullptr, true);
            (pass.memory.*act)();
            m_helpers->progress(WholeMemorySteps, -1, nullptr, nullptr, true);
        });
    });
}

void DownloadEngine::eraseAll()
{
    forAllMemory(Erase, &TargetMemoryInterface::eraseAll);
}

void DownloadEngine::lockAll()
{
    forAllMemory(Lock, &TargetMemoryInterface::lockAll);
}

void DownloadEngine::unlockAll()
{
    forAllMemory(Unlock, &TargetMemoryInterface::unlockAll);
}

void DownloadEngine::forRange(const Operation& operation, uint32_t address, unsigned count, int memory)
{
    if (count > 0 && address > UINT32_MAX - (count - 1))
        throw HException("range beyond the end of the address space");
    asLoad(QLatin1String(operation.label) + QLatin1String(" Memory Range"), operation, [&] {
        forEachPass([&](Pass& pass) {
            if (pass.ee != (memory != 0))
                return;
            open(pass, operation, count);
            sectionMessage(operation, QString(), address, count);
            const Part part{address, count, nullptr};
            if (&operation == &Erase)
                erasing(pass, [&] { walk(pass, part); });
            else
                walk(pass, part);
            close(pass);
        });
    });
}

void DownloadEngine::eraseBytes(uint32_t address, unsigned count, int memory)
{
    TargetMemoryInterface* erased = memory ? m_target.eeMemory() : m_target.codeMemory();
    if (!erased || !erased->erase())
        return;
    forRange(Erase, address, count, memory);
}

void DownloadEngine::lockBytes(uint32_t address, unsigned count, int memory)
{
    forRange(Lock, address, count, memory);
}

uint32_t DownloadEngine::lockStep(Pass& pass, const Part& part)
{
    uint32_t piece = std::min(part.length, pass.memory.optimumLockBytesFragment());
    pass.memory.lockBytes(part.address, piece);
    return piece;
}

void DownloadEngine::unlockBytes(uint32_t address, unsigned count, int memory)
{
    forRange(Unlock, address, count, memory);
}

uint32_t DownloadEngine::unlockStep(Pass& pass, const Part& part)
{
    uint32_t piece = std::min(part.length, pass.memory.optimumUnlockBytesFragment());
    pass.memory.unlockBytes(part.address, piece);
    return piece;
}
