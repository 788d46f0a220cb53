#include "project/PackageSystem.h"

#include "project/MacroSystem.h"
#include "support/HException.h"
#include "support/Path.h"
#include "support/QTx.h"

#include <QFileInfo>
#include <QSaveFile>

namespace {

// Both chain the user's lists to the installation's, so that a reader sees one document.
constexpr char Frequencies[] = "<envelope>\n"
                               "  <include filename=\"$(BenchDir)/targets/frequencies.xml\" />\n"
                               "</envelope>\n";
constexpr char Templates[] =
    "<!DOCTYPE Project_Templates_File>\n"
    "<projects>\n"
    "  <include filename=\"$(BenchDir)/targets/project_templates.xml\" no_root=\"1\" />\n"
    "</projects>\n";

void createMissing(const QString& directory, const char* name, const QByteArray& text)
{
    QString path = directory + QLatin1String(name);
    if (QFileInfo::exists(path))
        return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        throw HException(QLatin1String("cannot create ") + path);
}

} // namespace

QString benchUserDirectory()
{
    return QTx::userLocalAppDataDirectory(QStringLiteral("Forgeline/MAXQ30"));
}

void setupDefaultSystemMacros(MacroSystem& macros, const QString& benchDirectory)
{
    macros.setSystemMacro(QStringLiteral("BenchMajorVersion"), QStringLiteral("2"));
    macros.setSystemMacro(QStringLiteral("BenchMinorVersion"), QStringLiteral("0"));
    macros.setSystemMacro(QStringLiteral("BenchRevision"), QStringLiteral("0"));
    macros.setSystemMacro(QStringLiteral("BenchName"), QStringLiteral("Forgeline for MAXQ30"));
    macros.setSystemMacroPath(QStringLiteral("BenchDir"), Path(benchDirectory));
    macros.setSystemMacroPath(QStringLiteral("BenchUserDir"), Path(benchUserDirectory()));
}

void PackageSystem::setupPackageMacros(MacroSystem& macros, const QString& packagesDirectory)
{
    QString directory = MacroSystem::replaceMacros(macros.systemMacros(), packagesDirectory);
    QString targets = directory + QLatin1String("/targets");
    macros.setSystemMacro(QStringLiteral("PackagesDir"), directory);
    macros.setSystemMacro(QStringLiteral("TargetsDir"), targets);
    macros.setSystemMacro(QStringLiteral("SamplesDir"), directory + QLatin1String("/samples"));
}

void PackageSystem::createPackageFiles(const MacroSystem& macros)
{
    const QString targets = macros.systemMacro(QStringLiteral("TargetsDir"));
    // When this fails the first file can't be created, and that is what is told.
    if (!QFileInfo::exists(targets))
        QTx::makeDir(targets);
    createMissing(targets, "/frequencies.xml", Frequencies);
    createMissing(targets, "/project_templates.xml", Templates);
}
