// The operations of TargetInterface that move a load file to and from target memory. Each brackets
// itself as a load and makes one pass over code memory and one over EEPROM.

#include "loadfile/LoadFileInterface.h"
#include "project/EnvironmentSettings.h"
#include "support/HException.h"
#include "target/TargetInterface.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QFileInfo>

#include <algorithm>
#include <climits>

namespace {

constexpr int GroupCount = 0xc100; // of beginGroup: a group of this engine
constexpr int FailureLevel = 0x104;

// What a section without data is programmed with, and compared to.
constexpr unsigned ZeroPiece = 1024;
const unsigned char g_zeros[ZeroPiece] = {};

int progressCount(uint64_t bytes)
{
    return int(std::min<uint64_t>(bytes, INT_MAX));
}

// A section without data stands for zeros: compared piece by piece with a block of them.
bool matches(TargetMemoryInterface& memory, uint32_t address, unsigned count, const unsigned char* data)
{
    if (data)
        return memory.verifyBytes(address, count, data);
    while (count > 0) {
        unsigned piece = std::min(count, ZeroPiece);
        if (!memory.verifyBytes(address, piece, g_zeros))
            return false;
        address += piece;
        count -= piece;
    }
    return true;
}

// Where a range that does not match differs first, in words.
QString firstDifference(TargetMemoryInterface& memory, uint32_t address, unsigned count,
                        const unsigned char* data)
{
    unsigned char there[64];
    for (unsigned offset = 0; offset < count; offset += sizeof there) {
        unsigned piece = std::min<unsigned>(count - offset, sizeof there);
        memory.uploadBytes(address + offset, piece, there);
        for (unsigned i = 0; i < piece; ++i) {
            unsigned expected = data ? data[offset + i] : 0;
            if (there[i] != expected)
                return QString::asprintf("The first difference is at 0x%08X: 0x%02X expected, 0x%02X found",
                                         address + offset + i, expected, there[i]);
        }
    }
    return QStringLiteral("The memory answered differently when it was read again");
}

QString quotedFileName(const char* name)
{
    return QLatin1Char('"') + QFileInfo(QFile::decodeName(name)).fileName() + QLatin1Char('"');
}

int sizeDisplayUnit()
{
    PropertyValue* entry = environment ? environment->findProperty("Environment/Size Display Unit") : nullptr;
    return entry ? entry->toInt() : 0;
}

// The target's own answer to a cancelled operation; a front end that offers cancelling catches it.
class OperationCancelled : public HException {
public:
    using HException::HException;
};

} // namespace

QString kbSize(uint64_t length, int unitFormat)
{
    struct Unit {
        uint64_t base;
        const char* small;
        const char* large; // above base squared
    };
    static const Unit units[] = {{1000, "k", "M"}, {1024, "K", "M"}, {1024, "ki", "Mi"}};
    const Unit& unit = units[unitFormat == 1 || unitFormat == 2 ? unitFormat : 0];
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

// One of the two walks of an operation.
struct TargetInterface::Pass {
    TargetMemoryInterface* memory;
    bool ee;
    AddressRanges& touched;
    TargetInterfaceHelperFunctions* helpers;
    uint64_t done = 0;
    uint64_t total = 0;

    const LoadFileSections::List& sections(LoadFileInterface* file) const
    {
        LoadFileSections& all = file->loadFileSections();
        return ee ? all.eeSections() : all.sections();
    }
    void open(uint64_t bytes, const char* label)
    {
        done = 0;
        total = bytes;
        if (total > 0)
            helpers->progress(0, progressCount(total), label, "bytes", true);
    }
    void advance(uint64_t bytes)
    {
        done += bytes;
        helpers->progress(progressCount(done), -1, nullptr, nullptr, true);
    }
    // What was skipped still counts as done.
    void close()
    {
        if (done < total)
            helpers->progress(progressCount(total), -1, nullptr, nullptr, true);
        done = total;
    }
    uint64_t totalOf(LoadFileInterface* file) const
    {
        LoadFileSections& all = file->loadFileSections();
        return ee ? all.eelength() : all.length();
    }
};

// The frame of every operation: a load, a message group around the body, and on failure or
// cancellation the operation's name in a message before the exception goes on.
void TargetInterface::asLoad(const QString& title, const char* operation, const std::function<void()>& body)
{
    loadBegin();
    auto report = [&](const char* what) {
        // The link may be what failed: a second failure while the load is put away adds nothing.
        try {
            loadEnd();
        } catch (...) {
        }
        QString text = QLatin1String(operation) + QLatin1String(what);
        m_helpers->message(text, FailureLevel);
        m_helpers->endGroup(text);
    };
    m_helpers->beginGroup(title, GroupCount);
    try {
        body();
    } catch (const OperationCancelled&) {
        report(" cancelled");
        throw;
    } catch (const HException&) {
        report(" failed");
        throw;
    } catch (...) {
        report(" failed");
        throw;
    }
    m_helpers->endGroup(QString());
    loadEnd();
}

void TargetInterface::forEachPass(const std::function<void(Pass&)>& body)
{
    for (int i = 0; i < 2; ++i)
        if (TargetMemoryInterface* memory = i == 0 ? codeMemory() : eeMemory()) {
            Pass pass{memory, i == 1, m_touched[i], m_helpers};
            body(pass);
        }
}

void TargetInterface::checkCancelled(const char* operation)
{
    if (m_helpers->checkCancelled())
        throw OperationCancelled(std::string(operation) + " cancelled");
}

void TargetInterface::sectionMessage(const char* verb, const QString& name, uint32_t address, uint32_t length)
{
    QString text =
        QLatin1String(verb) + QLatin1Char(' ') + kbSize(length, sizeDisplayUnit()) + QLatin1String(" of ");
    text += name.isEmpty() ? QLatin1String("addresses ") : name + QLatin1String(" addresses ");
    text += addressString(address) + QLatin1String(" -- ") +
            addressString(length ? address + (length - 1) : address);
    m_helpers->message(text);
}

void TargetInterface::checkLoadFileFits(LoadFileInterface* file)
{
    forEachPass([&](Pass& pass) {
        const AddressRanges& layout = pass.memory->addressRanges();
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

// Erases what this load has not erased yet, block by block as the memory reports; with `compare` only
// where the memory differs from the data.
void TargetInterface::eraseRange(Pass& pass, uint32_t address, uint32_t length, const unsigned char* data,
                                 bool compare)
{
    while (length > 0) {
        checkCancelled("Erase");
        uint32_t piece;
        if (const AddressRange* erased = pass.touched.find(address)) {
            piece = uint32_t(std::min<uint64_t>(length, uint64_t(erased->high) - address + 1));
        } else {
            piece = std::min(length, pass.memory->optimumVerifyBytesFragment());
            if (!compare || !matches(*pass.memory, address, piece, data)) {
                piece = std::min(length, pass.memory->optimumEraseBytesFragment());
                unsigned erasedAddress = address;
                unsigned erasedCount = piece;
                pass.memory->eraseBytes(address, piece, &erasedAddress, &erasedCount);
                if (erasedCount > 0)
                    pass.touched.add(erasedAddress, erasedAddress + (erasedCount - 1), true);
            }
        }
        pass.advance(piece);
        address += piece;
        length -= piece;
        if (data)
            data += piece;
    }
}

namespace {

// eraseBytesBegin() and eraseBytesEnd() come in pairs, whatever happens between them.
class EraseBracket {
public:
    explicit EraseBracket(TargetMemoryInterface* memory) : m_memory(memory) { m_memory->eraseBytesBegin(); }
    void end()
    {
        TargetMemoryInterface* memory = m_memory;
        m_memory = nullptr;
        memory->eraseBytesEnd();
    }
    ~EraseBracket()
    {
        if (!m_memory)
            return;
        // Unwinding: the first failure is the one to tell, and an interrupt must not become a second.
        try {
            m_memory->eraseBytesEnd();
        } catch (...) {
        }
    }

private:
    TargetMemoryInterface* m_memory;
};

} // namespace

void TargetInterface::eraseLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    asLoad(QLatin1String("Erasing ") + quotedFileName(name) + QLatin1String(" to ") + m_name, "Erase", [&] {
        forEachPass([&](Pass& pass) {
            uint64_t total = pass.totalOf(file);
            if (!pass.memory->erase() || total == 0)
                return;
            pass.open(total, "Erasing");
            EraseBracket bracket(pass.memory);
            bool compare =
                m_helpers->differentialDownloadEnabled() && pass.memory->supportsDifferentialDownloading();
            for (const auto& section : pass.sections(file)) {
                sectionMessage("Erasing", QString::fromStdString(section->name()), section->address(),
                               section->length());
                eraseRange(pass, section->address(), section->length(), section->data(patched), compare);
            }
            bracket.end();
            pass.close();
        });
    });
}

namespace {

// Calls body(address, count, offset) for each part of [address, address + length) that lies in one of
// the ranges, in their order.
void forEachIntersection(const AddressRanges& ranges, uint32_t address, uint32_t length,
                         const std::function<void(uint32_t, uint32_t, uint32_t)>& body)
{
    if (length == 0)
        return;
    uint32_t last = address + (length - 1);
    for (const AddressRange& range : ranges) {
        uint32_t low = std::max(range.low, address);
        uint32_t high = std::min(range.high, last);
        if (low <= high)
            body(low, high - low + 1, low - address);
    }
}

} // namespace

void TargetInterface::downloadLoadFile(LoadFileInterface* file, const char* name, bool patched)
{
    asLoad(QLatin1String("Downloading ") + quotedFileName(name) + QLatin1String(" to ") + m_name, "Download",
           [&] {
               forEachPass([&](Pass& pass) {
                   pass.open(pass.totalOf(file), "Programming");
                   bool differential = m_helpers->differentialDownloadEnabled() &&
                                       pass.memory->supportsDifferentialDownloading();
                   for (const auto& section : pass.sections(file)) {
                       sectionMessage("Programming", QString::fromStdString(section->name()),
                                      section->address(), section->length());
                       const unsigned char* data = section->data(patched);
                       auto program = [&](uint32_t address, uint32_t count, uint32_t offset) {
                           unsigned fragment = data ? pass.memory->optimumDownloadBytesFragment()
                                                    : pass.memory->optimumMemsetBytesFragment();
                           while (count > 0) {
                               checkCancelled("Download");
                               uint32_t piece = std::min(count, fragment);
                               bool last = differential || pass.done + piece == pass.total;
                               if (data)
                                   pass.memory->downloadBytes(address, piece, data + offset, last);
                               else
                                   pass.memory->memsetBytes(address, piece, 0);
                               pass.advance(piece);
                               address += piece;
                               offset += piece;
                               count -= piece;
                           }
                       };
                       if (differential)
                           forEachIntersection(pass.touched, section->address(), section->length(), program);
                       else
                           program(section->address(), section->length(), 0);
                   }
                   pass.close();
               });
           });
}

bool TargetInterface::verifyLoadFile(LoadFileInterface* file, const char* name, bool patched, bool erasedOnly)
{
    bool result = true;
    m_verifyMismatch.clear();
    asLoad(QLatin1String("Verifying ") + quotedFileName(name) + QLatin1String(" on ") + m_name, "Verify",
           [&] {
               forEachPass([&](Pass& pass) {
                   pass.open(pass.totalOf(file), "Verifying");
                   bool differential = erasedOnly && m_helpers->differentialDownloadEnabled() &&
                                       pass.memory->supportsDifferentialDownloading();
                   for (const auto& section : pass.sections(file)) {
                       if (!result)
                           break;
                       sectionMessage("Verifying", QString::fromStdString(section->name()),
                                      section->address(), section->length());
                       const unsigned char* data = section->data(patched);
                       auto compare = [&](uint32_t address, uint32_t count, uint32_t offset) {
                           while (result && count > 0) {
                               checkCancelled("Verify");
                               uint32_t piece = std::min(count, pass.memory->optimumVerifyBytesFragment());
                               const unsigned char* expected = data ? data + offset : nullptr;
                               result = matches(*pass.memory, address, piece, expected);
                               if (!result) {
                                   m_verifyMismatch = firstDifference(*pass.memory, address, piece, expected);
                                   break;
                               }
                               pass.advance(piece);
                               address += piece;
                               offset += piece;
                               count -= piece;
                           }
                       };
                       if (differential)
                           forEachIntersection(pass.touched, section->address(), section->length(), compare);
                       else
                           compare(section->address(), section->length(), 0);
                   }
                   pass.close();
               });
               if (!result)
                   m_helpers->message(QStringLiteral("Verify failed"), FailureLevel);
           });
    return result;
}

namespace {

// What was read back from the target, over a buffer of its own.
class UploadLoadFileSection : public StandardLoadFileSection {
public:
    explicit UploadLoadFileSection(const LoadFileSectionInterface& like)
        : StandardLoadFileSection(like.name(), like.address(), like.length(),
                                  new unsigned char[like.length()])
    {
    }
    ~UploadLoadFileSection() override { delete[] m_data; }
    unsigned char* buffer() { return m_data; }
};

} // namespace

void TargetInterface::uploadLoadFile(LoadFileInterface* file, const char* name, LoadFileSections& result)
{
    asLoad(QLatin1String("Uploading ") + quotedFileName(name) + QLatin1String(" from ") + m_name, "Upload",
           [&] {
               TargetMemoryInterface* memory = codeMemory();
               if (memory) {
                   Pass pass{memory, false, m_touched[0], m_helpers};
                   pass.open(pass.totalOf(file), "Uploading");
                   for (const auto& section : pass.sections(file)) {
                       m_helpers->message(QStringLiteral("uploading section %1: size 0x%2, addr 0x%3")
                                              .arg(QString::fromStdString(section->name()),
                                                   QString::number(section->length(), 16),
                                                   QString::number(section->address(), 16)));
                       auto upload = std::make_unique<UploadLoadFileSection>(*section);
                       for (uint32_t offset = 0; offset < section->length();) {
                           uint32_t piece =
                               std::min(section->length() - offset, memory->optimumUploadBytesFragment());
                           memory->uploadBytes(section->address() + offset, piece, upload->buffer() + offset);
                           pass.advance(piece);
                           offset += piece;
                       }
                       result.add(std::move(upload));
                   }
               }
               m_helpers->message(QStringLiteral("Upload complete"));
           });
}

// One step for each whole memory. There is no way to tell how far it has come, so the bar has ten
// steps that are done at once.
void TargetInterface::forAllMemory(const char* title, const char* operation, const char* labels[2],
                                   bool erasableOnly, void (TargetMemoryInterface::*act)())
{
    asLoad(QLatin1String(title), operation, [&] {
        if (erasableOnly)
            for (AddressRanges& ranges : m_touched)
                ranges.add(0, UINT32_MAX, true);
        forEachPass([&](Pass& pass) {
            if (erasableOnly && !pass.memory->erase())
                return;
            checkCancelled(operation);
            m_helpers->progress(0, 10, labels[pass.ee], nullptr, true);
            (pass.memory->*act)();
            m_helpers->progress(10, -1, nullptr, nullptr, true);
        });
    });
}

void TargetInterface::eraseAll()
{
    const char* labels[] = {"Erasing entire FLASH memory", "Erasing entire EEPROM memory"};
    forAllMemory("Erasing All Memory", "Erase", labels, true, &TargetMemoryInterface::eraseAll);
}

void TargetInterface::lockAll()
{
    const char* labels[] = {"Locking entire FLASH memory", "Locking entire EEPROM memory"};
    forAllMemory("Locking All Memory", "Lock", labels, false, &TargetMemoryInterface::lockAll);
}

void TargetInterface::unlockAll()
{
    const char* labels[] = {"Unlocking entire FLASH memory", "Unlocking entire EEPROM memory"};
    forAllMemory("Unlocking All Memory", "Unlock", labels, false, &TargetMemoryInterface::unlockAll);
}

void TargetInterface::forRange(const char* title, const char* operation, const char* label, uint32_t address,
                               unsigned count, int memory, const std::function<void(Pass&)>& body)
{
    if (count > 0 && address > UINT32_MAX - (count - 1))
        throw HException("range beyond the end of the address space");
    asLoad(QLatin1String(title), operation, [&] {
        forEachPass([&](Pass& pass) {
            if (pass.ee != (memory != 0))
                return;
            pass.open(count, label);
            sectionMessage(label, QString(), address, count);
            body(pass);
            pass.close();
        });
    });
}

void TargetInterface::eraseBytes(uint32_t address, unsigned count, int memory)
{
    TargetMemoryInterface* erased = memory ? eeMemory() : codeMemory();
    if (!erased || !erased->erase())
        return;
    forRange("Erasing Memory Range", "Erase", "Erasing", address, count, memory, [&](Pass& pass) {
        EraseBracket bracket(pass.memory);
        eraseRange(pass, address, count, nullptr, false);
        bracket.end();
    });
}

// Calls `act` on the range in pieces of at most what `fragment` answers.
void TargetInterface::forFragments(Pass& pass, const char* operation, uint32_t address, unsigned count,
                                   unsigned (TargetMemoryInterface::*fragment)() const,
                                   void (TargetMemoryInterface::*act)(uint32_t, unsigned))
{
    while (count > 0) {
        checkCancelled(operation);
        unsigned piece = std::min(count, (pass.memory->*fragment)());
        (pass.memory->*act)(address, piece);
        pass.advance(piece);
        address += piece;
        count -= piece;
    }
}

void TargetInterface::lockBytes(uint32_t address, unsigned count, int memory)
{
    forRange("Locking Memory Range", "Lock", "Locking", address, count, memory, [&](Pass& pass) {
        forFragments(pass, "Lock", address, count, &TargetMemoryInterface::optimumLockBytesFragment,
                     &TargetMemoryInterface::lockBytes);
    });
}

void TargetInterface::unlockBytes(uint32_t address, unsigned count, int memory)
{
    forRange("Unlocking Memory Range", "Unlock", "Unlocking", address, count, memory, [&](Pass& pass) {
        forFragments(pass, "Unlock", address, count, &TargetMemoryInterface::optimumUnlockBytesFragment,
                     &TargetMemoryInterface::unlockBytes);
    });
}
