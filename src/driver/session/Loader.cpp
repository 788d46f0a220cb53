#include "driver/session/Loader.h"

#include "driver/session/Interrupt.h"
#include "driver/session/SessionFace.h"
#include "loadfile/LoadFileFactory.h"
#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileSections.h"
#include "maxq30/sim/SimulatedHMonitor.h"
#include "project/ProjectElement.h"
#include "support/HException.h"
#include "support/Path.h"
#include "target/TargetInterfaceFactory.h"

namespace {

// Lowers the load depth on every way out; the first failure is the one that is told.
class LoadBracket {
public:
    explicit LoadBracket(TargetInterface* target) : m_target(target) { m_target->loadBegin(); }
    ~LoadBracket()
    {
        if (!m_target)
            return;
        try {
            m_target->loadEnd();
        } catch (const HException&) {
        }
    }
    void end()
    {
        TargetInterface* target = m_target;
        m_target = nullptr;
        target->loadEnd();
    }

private:
    TargetInterface* m_target;
};

} // namespace

void Loader::setTarget(const QString& name)
{
    if (m_target) {
        if (m_target->isConnected())
            m_target->disconnect();
        m_target.reset();
    }
    TargetInterfaceFactory* factory = TargetInterfaceFactory::instance();
    QByteArray latin1 = name.toLatin1();
    m_target.reset(factory->create(latin1.constData()));
    if (!m_target)
        if (const char* className = factory->classnameFromShortname(latin1.constData()))
            m_target.reset(factory->create(className));
    if (m_target)
        return;
    QString text = QStringLiteral("unknown target \"%1\"\n\nTarget interfaces:\n\n").arg(name);
    for (const TargetInterfaceInfo& target : factory->targets())
        text += QString::asprintf("  %-22s%s\n", target.name(), target.description);
    throw HException(text);
}

void Loader::setLoadAddress(unsigned address)
{
    m_loadAddress = address;
    m_loadAddressGiven = true;
}

void Loader::setVerbosity(bool quiet, bool verbose)
{
    m_quiet = quiet;
    m_verbose = verbose;
}

void Loader::addLoadFile(const QString& name)
{
    Path path(name);
    if (!path.exists())
        throw HException(QStringLiteral("The file \"%1\" does not exist").arg(path.fileName()))
            .setHint("looked for " + path.osPath());
    std::string osPath = path.osPath();
    LoadFileFactory* factory = LoadFileFactory::instance();
    const char* type = m_filetype ? m_filetype : factory->detect(osPath.c_str());
    if (!type)
        throw HException(QStringLiteral("Cannot determine type of file \"%1\"").arg(path.fileName()))
            .setHint("name its type with -filetype; known by the name's end: " + factory->endings());
    auto destroy = [factory](LoadFileInterface* file) { factory->destroy(file); };
    std::unique_ptr<LoadFileInterface, decltype(destroy)> file(factory->create(osPath.c_str(), type),
                                                               destroy);
    if (!file)
        throw HException(QStringLiteral("Cannot load file \"%1\"").arg(path.fileName()));
    if (!file->hasLoadAddress()) {
        if (!m_loadFiles.isEmpty())
            throw HException("only one load file without address information can be specified");
        if (!m_loadAddressGiven)
            throw HException("no load address specified (-loadaddress option)");
        file->setLoadAddress(m_loadAddress);
    }
    m_loadFiles.add(file.release(), osPath, true);
}

bool Loader::simulated() const
{
    return dynamic_cast<const SimulatedHMonitor*>(m_target.get()) != nullptr;
}

TargetInterface* Loader::targetInterface() const
{
    if (!m_target)
        throw HException("No target selected");
    return m_target.get();
}

TargetInterface* Loader::connectedTarget(const char* otherwise) const
{
    TargetInterface* target = targetInterface();
    if (!target->isConnected())
        throw HException(otherwise);
    return target;
}

void Loader::connectTarget(ProjectElement* project, const QString& configuration)
{
    TargetInterface* target = targetInterface();
    if (target->isConnected())
        throw HException("Target already connected");
    target->syncSettingsWithProject(project, configuration);
    target->connect(true);
}

void Loader::disconnectTarget()
{
    connectedTarget("Target is not connected")->disconnect();
}

void Loader::resetTarget()
{
    connectedTarget("Target is not connected")->reset(false, false);
}

void Loader::checkOverlap()
{
    m_loadFiles.sort();
    if (m_loadFiles.overlap())
        throw HException("cannot download multiple load files because they overlap")
            .setHint(m_loadFiles.overlapText());
}

void Loader::downloadLoadFiles()
{
    TargetInterface* target = connectedTarget("Target is not connected");
    checkOverlap();
    for (const LoadFileListItem& item : m_loadFiles.items())
        target->checkLoadFileFits(item.file);
    LoadBracket bracket(target);
    m_deviceState = QStringLiteral("partly erased");
    if (target->loaderEraseAll())
        target->eraseAll();
    else
        for (const LoadFileListItem& item : m_loadFiles.items())
            target->eraseLoadFile(item.file, item.name.c_str(), false);
    m_deviceState = QStringLiteral("erased");
    m_donePart = 0;
    for (const LoadFileListItem& item : m_loadFiles.items()) {
        m_programmedFile = Path(item.name).fileName();
        target->downloadLoadFile(item.file, item.name.c_str(), false);
        m_deviceState = QStringLiteral("erased, and programmed as far as %1").arg(m_programmedFile);
        m_programmedFile.clear();
    }
    target->flushMemoryInterfaces();
    bracket.end();
    m_deviceState.clear();
}

void Loader::verifyLoadFiles()
{
    TargetInterface* target = connectedTarget("Target is not connected");
    LoadBracket bracket(target);
    for (const LoadFileListItem& item : m_loadFiles.items())
        if (!target->verifyLoadFile(item.file, item.name.c_str(), false, false)) {
            HException failure(
                QStringLiteral("Verification of %1 has failed").arg(Path(item.name).fileName()));
            failure.setHint(target->verifyMismatch().toStdString());
            throw failure;
        }
    bracket.end();
}

// Progress is reported between any two pieces of work, so this is where an interrupt is noticed.
void Loader::progress(int done, int total, const char* label, const char* unit, bool)
{
    if (label || total > 0)
        m_total = total > 0 ? total : 0;
    if (!m_programmedFile.isEmpty() && m_total > 0 && done >= 0)
        m_donePart = 100 * double(done) / m_total;
    Interrupt::check();
    if (!m_quiet)
        m_face.progress(done, total, label, unit);
}

QString Loader::deviceState() const
{
    if (m_deviceState.isEmpty())
        return {};
    QString text = QLatin1String("the device was left ") + m_deviceState;
    if (!m_programmedFile.isEmpty())
        text += QStringLiteral(", with %1 programmed up to %2%").arg(m_programmedFile).arg(int(m_donePart));
    return text;
}

void Loader::tellSummary(bool downloaded, bool verified, qint64 milliseconds)
{
    uint64_t bytes = 0;
    for (const LoadFileListItem& item : m_loadFiles.items()) {
        const LoadFileSections& sections = item.file->loadFileSections();
        bytes += sections.length() + sections.eelength();
    }
    const size_t files = m_loadFiles.items().size();
    QString text = QStringLiteral("OK: %1 file%2, ").arg(files).arg(QLatin1String(files == 1 ? "" : "s"));
    text += bytes < 1000 ? QStringLiteral("%1 bytes").arg(bytes)
                         : QStringLiteral("%1 kB").arg((bytes + 500) / 1000);
    if (!downloaded)
        text += QLatin1String(", not downloaded");
    if (verified)
        text += QLatin1String(", verified");
    if (!m_quiet)
        m_face.summary(text + QString::asprintf(", %.2f s", double(milliseconds) / 1000));
}

void Loader::message(const QString& text)
{
    if (m_verbose && !m_quiet)
        m_face.message(text);
}
