#include "tools/kvas/Link.h"
#include "tools/kvas/Assembler.h"
#include "tools/kvas/ModuleWriter.h"
#include "tools/kvas/Program.h"

#include <stdexcept>

namespace kvas {

std::string link(const Job& job, Diagnostics& diagnostics)
{
    Program program;
    program.moduleName = job.moduleName;
    try {
        Assembler assembler(program, diagnostics);
        for (const std::string& directory : job.directories)
            assembler.addDirectory(directory);
        for (const auto& [name, value] : job.definitions)
            assembler.define(name, value);
        for (const std::string& source : job.sources)
            assembler.assemble(source);
        assembler.finish();
        if (!diagnostics.failed())
            Layout(program, diagnostics, job.placement).run();
        if (!diagnostics.failed())
            return ModuleWriter(program).write();
    } catch (const GaveUp&) {
    } catch (const std::length_error& error) {
        diagnostics.error({}, error.what());
    }
    return {};
}

} // namespace kvas
