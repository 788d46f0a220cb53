#include "project/memorymap/MemoryMapOpenFiles.h"

#include <map>
#include <memory>

MemoryMap* MemoryMapOpenFiles::getMemoryMapFile(const QString& file)
{
    static std::map<QString, std::unique_ptr<MemoryMap>> open;
    const MacroSystem::Macros macros = macroSystem.globalMacros(true);
    QString name = MacroSystem::replaceMacros(macros, file);
    auto found = open.find(name);
    if (found != open.end() && found->second->upToDate())
        return found->second.get();
    auto map = std::make_unique<MemoryMap>();
    if (!map->load(name, MacroSystem::stringFromStringList(MacroSystem::stringListFromMacros(macros)),
                   true)) {
        open.erase(name);
        return nullptr;
    }
    return (open[name] = std::move(map)).get();
}
