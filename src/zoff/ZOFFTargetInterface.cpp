#include "zoff/ZOFFTargetInterface.h"

#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSection.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {

constexpr int FailureLevel = 4;
constexpr unsigned MaxPiece = 0x2000;

} // namespace

void ZOFFTargetInterface::loadZOFFModule(ZOFFModule* module)
{
    programModule(module, false);
}

void ZOFFTargetInterface::checkZOFFModuleMemoryExists(ZOFFModule* module)
{
    programModule(module, true);
}

void ZOFFTargetInterface::programModule(ZOFFModule* module, bool check)
{
    try {
        for (auto& [name, section] : module->sectionsByName())
            if (section->goesIntoLoadFile())
                programSection(section, check);
    } catch (const HException& failure) {
        helpers()->message(failure.text(), FailureLevel);
        throw;
    }
}

void ZOFFTargetInterface::programSection(ZOFFSection* section, bool check)
{
    section->computeSectionMetrics();
    uint32_t lowest = section->lowestAddress(), highest = section->highestAddress();
    if (lowest == ZOFFSection::UnknownAddress || highest == ZOFFSection::UnknownAddress)
        return;
    TargetMemoryInterface* memory = codeMemory();
    if (!memory)
        throw HException("target has no code memory");
    size_t capacity = std::max(std::min(memory->optimumPokeBytesFragment(), MaxPiece) & ~3u, 4u);
    std::vector<unsigned char> piece;
    piece.reserve(capacity);
    if (lowest == highest || int32_t(lowest) < 0 || int32_t(highest) < 0)
        return;

    QString name = QString::fromUtf8(section->name()->c_str(), section->name()->length());
    int64_t done = 0;
    if (!check) {
        int64_t total = section->accumulatedSize();
        QByteArray label = ("Programming " + kbSize(uint64_t(total), 0) + " of " + name).toUtf8();
        helpers()->progress(0, int(std::min<int64_t>(total, std::numeric_limits<int>::max())),
                            label.constData(), "bytes", true);
    }
    uint32_t start = lowest;
    auto handOn = [&] {
        if (piece.empty())
            return;
        auto count = unsigned(piece.size());
        if (check) {
            if (!memory->memoryExists(start, count))
                throw HException("Section " + name + " is too big for target");
        } else {
            memory->downloadBytes(start, count, piece.data());
            done += count;
            helpers()->progress(int(std::min<int64_t>(done, std::numeric_limits<int>::max())), -1, nullptr,
                                nullptr, true);
        }
        start += count;
        piece.clear();
    };
    section->find([&](ZOFFInsn* insn) {
        int length = insn->length();
        if (length <= 0 || insn->pc() < 0)
            return false;
        auto pc = uint32_t(insn->pc());
        if (pc != start + piece.size()) {
            handOn();
            start = pc;
        }
        for (int i = 0; i < length; ++i) {
            piece.push_back(insn->getByte(i));
            if (piece.size() == capacity)
                handOn();
        }
        return false;
    });
    handOn();
}
