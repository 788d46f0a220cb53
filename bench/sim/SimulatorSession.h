// A connected simulator target, with the least of a solution that it needs.
#pragma once

#include "maxq30/sim/MAXQ30Simulator.h"
#include "project/MAXQ30BuildSystem.h"
#include "project/MAXQ30ProjectSystem.h"
#include "project/StandardBuildSystem.h"
#include "project/StandardProjectSystem.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

class SimulatorSession {
public:
    explicit SimulatorSession(const char* library)
    {
        projectSystem = new MAXQ30ProjectSystem(macroSystem);
        buildSystem = new MAXQ30BuildSystem(*projectSystem, QStringList());
        write("rom.hex", ":00000001FF\n");
        write("map.xml", "<!DOCTYPE Board_Memory_Definition_File>\n<Root name=\"board\">"
                         "<MemorySegment name=\"FLASH\" addressSpace=\"CODE\" start=\"0\" size=\"0x10000\"/>"
                         "<MemorySegment name=\"RAM\" addressSpace=\"DATA\" start=\"0\" size=\"0x1000\"/>"
                         "</Root>\n");
        write("bench.kvp",
              QByteArray("<!DOCTYPE Anvil_Project_File>\n<solution Name=\"bench\" version=\"2\">"
                         "<configuration Name=\"Common\" simulator_DLL_FileName=\"") +
                  library + "\" simulator_DLL_RomFileName=\"" + m_directory.filePath("rom.hex").toUtf8() +
                  "\"/><project Name=\"p\"><file file_name=\"map.xml\">"
                  "<configuration Name=\"Common\" file_type=\"Memory Map\"/></file></project></solution>\n");
        projectSystem->loadSolution(m_directory.filePath("bench.kvp"), nullptr, nullptr);
        m_target = std::make_unique<MAXQ30Simulator>(nullptr);
        m_target->syncSettingsWithProject(projectSystem->findProject(nullptr, "p"), "Common");
        m_target->connect(true);
    }

    MAXQ30Simulator& target() { return *m_target; }

    // Connects anew, with the script or with null for none.
    void setPeripherals(const char* script)
    {
        m_target->setPeripheralFile(QString::fromUtf8(script ? script : ""));
        m_target->setEnablePeripheralFile(script);
        m_target->connect(true);
    }

private:
    void write(const char* name, const QByteArray& text)
    {
        QFile file(m_directory.filePath(QString::fromLatin1(name)));
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }

    QTemporaryDir m_directory;
    std::unique_ptr<MAXQ30Simulator> m_target;
};
