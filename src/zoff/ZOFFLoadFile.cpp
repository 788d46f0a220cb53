#include "zoff/ZOFFLoadFile.h"

#include "loadfile/LoadFileSection.h"
#include "loadfile/LoadFileSections.h"
#include "support/HException.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFPackedItems.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFfiles.h"
#include "zoff/limits.h"

namespace {

constexpr int32_t Unplaced = -1;

} // namespace

ZOFFLoadFile::ZOFFLoadFile(const Path& path) : m_module(g_ZOFFfiles.getModule(path))
{
    if (!m_module)
        throw HException("bad object file: no module in " + path.osPath());
}

ZOFFLoadFile::~ZOFFLoadFile()
{
    g_ZOFFfiles.release(m_module);
}

bool ZOFFLoadFile::createLoadFileSections()
{
    m_sections = LoadFileSections();
    int64_t total = 0;
    for (auto& [name, section] : m_module->sectionsByName())
        if (section->goesIntoLoadFile())
            addSection(section, total);
    return true;
}

// `total` counts the bytes of all sections, so that fillings of gigabytes are refused before they are made.
void ZOFFLoadFile::addSection(ZOFFSection* section, int64_t& total)
{
    std::string name(section->name()->view());
    std::unique_ptr<ExpandingLoadFileSection> run;
    auto finishRun = [&] {
        if (!run)
            return;
        if (section->sectionKind() == ZOFFSection::Eeprom)
            m_sections.addee(std::move(run));
        else
            m_sections.add(std::move(run));
    };
    section->forEachRun([&](const ZOFFRun& bytes) {
        int64_t count = bytes.size();
        if (count <= 0)
            return;
        total += count;
        if (total > ZOFFLimits::CodeBytes)
            throw HException("bad object file: section " + name + " is too large");
        if (bytes.address() == Unplaced)
            throw HException("bad object file: section " + name + " has bytes without an address");
        auto pc = uint32_t(bytes.address());
        if (uint64_t(pc) + uint64_t(count) > UINT32_MAX)
            throw HException("bad object file: section " + name + " goes beyond the last address");
        if (!run || run->end() != pc) {
            finishRun();
            run = std::make_unique<ExpandingLoadFileSection>(name, pc);
        }
        bytes.copyBytes(run->expand(uint32_t(count)));
    });
    finishRun();
}
