#include "board/Images.h"
#include "sim/RomFile.h"
#include "sim/limits.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace board {

namespace {

using Bytes = std::vector<unsigned char>;

// No memory is larger, and a device or a pipe may have no end.
constexpr size_t LargestFile = 8 * size_t(maxq30::limits::MaximumMemory);

std::string readFile(const std::string& fileName, std::string& text)
{
    std::ifstream file(fileName, std::ios::binary);
    if (!file)
        return "cannot open " + fileName + ": " + std::strerror(errno);
    char buffer[1 << 16];
    do {
        file.read(buffer, sizeof buffer);
        text.append(buffer, size_t(file.gcount()));
        if (text.size() > LargestFile)
            return fileName + " is too large";
    } while (file);
    return file.bad() || !file.eof() ? "cannot read " + fileName : std::string();
}

std::string writeFile(const std::string& fileName, const Bytes& bytes)
{
    std::string temporary = fileName + "." + std::to_string(getpid()) + ".tmp";
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file)
        return "cannot write " + fileName + ": " + std::strerror(errno);
    bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    int error = errno;
    if (std::fclose(file) != 0 && written) {
        written = false;
        error = errno;
    }
    if (written && std::rename(temporary.c_str(), fileName.c_str()) != 0) {
        written = false;
        error = errno;
    }
    if (written)
        return {};
    std::remove(temporary.c_str());
    return "cannot write " + fileName + ": " + std::strerror(error);
}

const unsigned char* bytesOf(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

std::string loadCode(maxq30::Core& core, const Image& image)
{
    std::string text;
    if (std::string error = readFile(image.fileName, text); !error.empty())
        return error;
    if (image.atAddress || !text.starts_with(':'))
        return core.writeCode(image.address, uint32_t(text.size()), bytesOf(text))
                   ? std::string()
                   : image.fileName + " does not fit the code memory";
    std::string error;
    if (maxq30::loadRomText(core, text, error))
        return {};
    // The reader speaks of the file that it is usually given.
    return image.fileName + error.substr(error.find_first_of(",:"));
}

std::string loadData(maxq30::Core& core, const Image& image)
{
    std::string text;
    if (std::string error = readFile(image.fileName, text); !error.empty())
        return error;
    return core.writeData(image.address, uint32_t(text.size()), bytesOf(text))
               ? std::string()
               : image.fileName + " does not fit the data memory";
}

std::string saveCode(const maxq30::Core& core, const std::string& fileName)
{
    Bytes bytes(core.codeBytes());
    core.readCode(0, core.codeBytes(), bytes.data());
    return writeFile(fileName, bytes);
}

std::string saveData(const maxq30::Core& core, const std::string& fileName)
{
    Bytes bytes(core.dataBytes());
    core.readData(0, core.dataBytes(), bytes.data());
    return writeFile(fileName, bytes);
}

} // namespace board
