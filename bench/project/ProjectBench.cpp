// Measures what a session waits for: reading a solution of 10,000 files, finding settings in it,
// expanding them, and the plain XML speed beside expat (which builds no tree) and plain reading.
#include "project/BuildSystem.h"
#include "project/MAXQ30BuildSystem.h"
#include "project/MAXQ30ProjectSystem.h"
#include "project/ProjectElement.h"
#include "project/PropertyClass.h"
#include "project/StandardBuildSystem.h"
#include "project/StandardProjectSystem.h"
#include "project/memorymap/MemoryMap.h"
#include "project/xml/XMLDocument.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#ifdef HAVE_EXPAT
#include <expat.h>
#endif

namespace {

// The best of some runs, in seconds.
template <typename Work> double seconds(int runs, Work work)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        auto start = std::chrono::steady_clock::now();
        work();
        best =
            std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

QByteArray solutionText(int projects, int files)
{
    QByteArray text =
        "<!DOCTYPE Anvil_Project_File>\n<solution Name=\"Big\" version=\"2\">\n"
        "  <configuration Name=\"Common\" Platform=\"MAXQ30\" c_user_include_directories=\"inc\"/>\n"
        "  <configuration Name=\"Base\" hidden=\"Yes\" build_quietly=\"Yes\"/>\n"
        "  <configuration Name=\"Debug\" inherited_configurations=\"Base\"/>\n";
    for (int p = 0; p < projects; ++p) {
        text += "  <project Name=\"P" + QByteArray::number(p) +
                "\">\n    <configuration Name=\"Common\" "
                "project_directory=\"p" +
                QByteArray::number(p) + "\"/>\n    <folder Name=\"Source\" filter=\"c;h\">\n";
        for (int f = 0; f < files; ++f)
            text += "      <file file_name=\"source/module_" + QByteArray::number(f) +
                    ".c\">\n        <configuration Name=\"Debug\" build_debug_information=\"Yes\"/>\n      "
                    "</file>\n";
        text += "    </folder>\n  </project>\n";
    }
    return text + "</solution>\n";
}

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        abort();
}

} // namespace

int main()
{
    QTemporaryDir directory;
    QString path = directory.filePath("big.kvp");
    const QByteArray name = QFile::encodeName(path);
    QByteArray text = solutionText(20, 500);
    write(path, text);
    double megabytes = double(text.size()) / 1e6;
    printf("solution of 10,000 files, %.2f MB\n", megabytes);

    double reading = seconds(20, [&] {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || file.readAll().size() != text.size())
            abort();
    });
    printf("  plain reading        %8.1f MB/s\n", megabytes / reading);
    double parsing = seconds(20, [&] {
        XMLDocument document(false);
        if (!document.load(name.constData()))
            abort();
    });
    printf("  XMLDocument::load    %8.1f MB/s, %.2f ms\n", megabytes / parsing, parsing * 1e3);
#ifdef HAVE_EXPAT
    double expat = seconds(20, [&] {
        XML_Parser parser = XML_ParserCreate(nullptr);
        long elements = 0;
        XML_SetUserData(parser, &elements);
        XML_SetElementHandler(
            parser, [](void* count, const XML_Char*, const XML_Char**) { ++*static_cast<long*>(count); },
            [](void*, const XML_Char*) {});
        if (XML_Parse(parser, text.constData(), int(text.size()), 1) != XML_STATUS_OK)
            abort();
        XML_ParserFree(parser);
    });
    printf("  expat, no tree       %8.1f MB/s\n", megabytes / expat);
#endif

    MAXQ30ProjectSystem system(macroSystem);
    MAXQ30BuildSystem build(system, QStringList());
    double loading = seconds(5, [&] {
        system.closeSolution();
        system.loadSolution(path, nullptr, nullptr);
    });
    printf("  loadSolution         %8.1f ms\n", loading * 1e3);

    const QList<ProjectElement*> files = system.sourceFiles(system.solutionElement());
    const PropertyClass* near = build.findPropertyClass("build_debug_information");
    const PropertyClass* far = build.findPropertyClass("c_user_include_directories");
    const PropertyClass* none = build.findPropertyClass("build_output_directory");
    auto lookup = [&](const char* label, const PropertyClass* setting) {
        const QString configuration = QStringLiteral("Debug");
        qsizetype length = 0;
        double time = seconds(5, [&] {
            for (const ProjectElement* file : files)
                length += system.settingFor(file, setting, configuration).size();
        });
        printf("  settingFor, %-8s %8.2f us\n", length ? label : "empty", time / double(files.size()) * 1e6);
    };
    lookup("nearest", near);
    lookup("farthest", far);
    lookup("default", none);
    double outputs = seconds(3, [&] {
        for (qsizetype i = 0; i < 1000; ++i)
            if (build.output(files[i], QStringLiteral("Debug"), true).isEmpty())
                abort();
    });
    printf("  output of a file     %8.2f us\n", outputs / 1000 * 1e6);

    QString map = directory.filePath("map.xml");
    write(
        map,
        "<Root><MemorySegment name=\"IO\" start=\"0\" size=\"0x10000\">"
        "<for index=\"m\" start=\"0\" end=\"16\" incr=\"1\" mul=\"256\"><RegisterGroup name=\"M$(m)\" "
        "start=\"+$(m_ap_hex)\">"
        "<for index=\"i\" start=\"0\" end=\"64\" incr=\"1\" mul=\"2\"><Register name=\"R$(m)_$(i)\" "
        "start=\"+$(i_ap_hex)\" "
        "register_type=\"unsigned short\"><BitField name=\"B$(i)\" start=\"0\" size=\"4\"/></Register></for>"
        "</RegisterGroup></for></MemorySegment></Root>");
    double mapping = seconds(5, [&] {
        MemoryMap memoryMap;
        if (!memoryMap.load(map, QString(), true) ||
            memoryMap.getAllElements().size() != 2 + 16 + 2 * 16 * 64)
            abort();
    });
    printf("memory map of 1,024 registers by nested <for>: %.2f ms\n", mapping * 1e3);
    return 0;
}
