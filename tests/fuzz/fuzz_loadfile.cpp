// The text load formats: the first byte chooses the reader, the rest is the file.
#include "loadfile/HexLoadFile.h"
#include "loadfile/IntelHexLoadFile.h"
#include "loadfile/SRecordLoadFile.h"
#include "loadfile/TIHexLoadFile.h"
#include "support/AddressRanges.h"
#include "support/HException.h"

namespace {

template <class File> void read(std::span<const char> text)
{
    File file(text);
    file.sortLoadFileSections();
    AddressRanges ranges;
    file.loadFileSections().getSectionAddressRanges(ranges);
    ranges.isOccludedBy(0x1000, 0x1FFF);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    std::span<const char> text(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        switch (data[0] & 3) {
        case 0: read<IntelHexLoadFile>(text); break;
        case 1: read<SRecordLoadFile>(text); break;
        case 2: read<TIHexLoadFile>(text); break;
        default: read<HexLoadFile>(text); break;
        }
    } catch (const HException&) {
    }
    return 0;
}
