#include "zoff/ZOFFLoadFile.h"

#include "support/HException.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFfiles.h"
#include "zoff/limits.h"

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
    int64_t total = 0;
    for (auto& [name, section] : m_module->sectionsByName()) {
        if (!section->goesIntoLoadFile())
            continue;
        total += section->accumulatedSize();
        if (total > ZOFFLimits::CodeBytes)
            throw HException("bad object file: section " + std::string(name->view()) + " is too large");
    }
    m_sections = LoadFileSections(); // an earlier set points into the buffer that goes now
    m_data = std::make_unique_for_overwrite<unsigned char[]>(size_t(total));
    unsigned char* data = m_data.get();
    for (auto& [name, section] : m_module->sectionsByName())
        if (section->goesIntoLoadFile())
            addSection(section, data);
    return true;
}

void ZOFFLoadFile::addSection(ZOFFSection* section, unsigned char*& data)
{
    section->computeSectionMetrics();
    std::string name(section->name()->view());
    uint32_t start = section->lowestAddress();
    if (start == ZOFFSection::UnknownAddress)
        start = 0;
    uint32_t length = 0;
    unsigned char* bytes = data;
    auto finishRun = [&] {
        if (length == 0)
            return;
        auto run = std::make_unique<StandardLoadFileSection>(name, start, length, bytes);
        if (section->sectionKind() == ZOFFSection::Eeprom)
            m_sections.addee(std::move(run));
        else
            m_sections.add(std::move(run));
    };
    section->find([&](ZOFFInsn* insn) {
        int count = insn->length();
        if (count <= 0)
            return false;
        if (insn->pc() < 0)
            throw HException("bad object file: section " + name + " has bytes without an address");
        auto pc = uint32_t(insn->pc());
        if (pc != start + length) {
            finishRun();
            start = pc;
            length = 0;
            bytes = data;
        }
        insn->copyBytes(data);
        data += count;
        length += uint32_t(count);
        return false;
    });
    finishRun();
}
