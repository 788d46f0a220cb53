// Where the tool finds its installation and the user's packages: the system macros that locate
// directories, and the package directory with the two files that chain it to the installation.
#pragma once

#include <QString>

class MacroSystem;

// The per-user data directory, below HOME.
QString benchUserDirectory();

// Sets BenchMajorVersion, BenchMinorVersion, BenchRevision, BenchName, BenchDir and BenchUserDir.
void setupDefaultSystemMacros(MacroSystem& macros, const QString& benchDirectory);

class PackageSystem {
public:
    // Sets PackagesDir, TargetsDir and SamplesDir. The directory may hold system macros.
    static void setupPackageMacros(MacroSystem& macros, const QString& packagesDirectory);
    // Makes the targets directory and writes frequencies.xml and project_templates.xml into it where they
    // are missing. Throws HException "cannot create FILE".
    static void createPackageFiles(const MacroSystem& macros);
};
