// The file operations of the target I/O server, carried out with the host's standard library. Host
// failures are results; lastErrno keeps the reason for perror.

#include "target/io/TargetIOServer.h"
#include "target/memory/TargetMemoryInterface.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int FirstHandle = 3;

bool isOutputHandle(int64_t handle)
{
    return handle == 1 || handle == 2;
}

// The modes of C alone. The host's library has more, among them files that are mapped into memory, where
// a read of what another handle cut off would be the end of this process.
std::string fileMode(const std::string& asked)
{
    std::string mode;
    for (char c : asked.substr(0, asked.find(',')))
        if (strchr("rwa+bx", c))
            mode += c;
    return mode;
}

} // namespace

FILE* TargetIOServer::file(int64_t handle)
{
    if (handle >= 1 && handle < MaxFiles && openFiles[size_t(handle)]) {
        errno = 0;
        return openFiles[size_t(handle)];
    }
    lastErrno = EBADF;
    result(-1);
    return nullptr;
}

// The first free handle, or -1. It is looked for before a file is opened, since opening may empty the file.
int TargetIOServer::freeHandle()
{
    for (int handle = FirstHandle; handle < MaxFiles; ++handle)
        if (!openFiles[size_t(handle)])
            return handle;
    lastErrno = EMFILE;
    return -1;
}

// Returns the handle of a newly opened file; -1 when it is null.
void TargetIOServer::enterFile(int handle, FILE* opened)
{
    lastErrno = errno;
    openFiles[size_t(handle)] = opened;
    m_pushedBack[size_t(handle)] = 0;
    result(opened ? handle : -1);
}

// A read that succeeds takes at least one of the characters that were pushed back.
void TargetIOServer::noteRead(int64_t handle)
{
    unsigned& count = m_pushedBack[size_t(handle)];
    count -= count > 0;
}

void TargetIOServer::fileOpen()
{
    beginBlock();
    std::string name = nextString();
    std::string mode = fileMode(nextString());
    int handle = freeHandle();
    if (handle < 0) {
        result(-1);
        return;
    }
    errno = 0;
    enterFile(handle, fopen(name.c_str(), mode.c_str()));
}

void TargetIOServer::temporaryFile()
{
    int handle = freeHandle();
    if (handle < 0) {
        result(-1);
        return;
    }
    errno = 0;
    enterFile(handle, tmpfile());
}

void TargetIOServer::fileReopen()
{
    beginBlock();
    std::string name = nextString();
    std::string mode = fileMode(nextString());
    int64_t handle = nextWord();
    if (FILE* open = file(handle)) {
        FILE*& entry = openFiles[size_t(handle)];
        entry = freopen(name.c_str(), mode.c_str(), open);
        lastErrno = errno;
        result(entry ? handle : -1);
    }
}

void TargetIOServer::fileFlush()
{
    if (FILE* open = file(argument())) {
        int status = fflush(open);
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::fileClose()
{
    int64_t handle = argument();
    if (FILE* open = file(handle)) {
        openFiles[size_t(handle)] = nullptr;
        int status = fclose(open);
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::fileGetc()
{
    int64_t handle = argument();
    if (handle == 0) {
        getchar_();
    } else if (FILE* open = file(handle)) {
        int character = fgetc(open);
        lastErrno = errno;
        if (character != EOF)
            noteRead(handle);
        result(character);
    }
}

void TargetIOServer::fileUngetc()
{
    beginBlock();
    int64_t character = nextWord();
    int64_t handle = nextWord();
    if (FILE* open = file(handle)) {
        unsigned& count = m_pushedBack[size_t(handle)];
        int status = count < MaxPushedBack ? ungetc(int(character), open) : EOF;
        lastErrno = count < MaxPushedBack ? errno : ENOBUFS;
        count += status != EOF;
        result(status);
    }
}

void TargetIOServer::fileGets()
{
    beginBlock();
    uint32_t buffer = uint32_t(nextWord());
    uint32_t size = uint32_t(nextWord());
    int64_t handle = nextWord();
    if (handle == 0) {
        handleGets(buffer, size);
        return;
    }
    FILE* open = file(handle);
    if (!open)
        return;
    if (size == 0 || !transferable(buffer, size)) {
        result(-1);
        return;
    }
    std::vector<char> line(size);
    bool read = fgets(line.data(), int(size), open) != nullptr;
    lastErrno = errno;
    if (read) {
        noteRead(handle);
        m_data->pokeBytes(buffer, size, reinterpret_cast<const unsigned char*>(line.data()));
    }
    result(read ? 0 : -1);
}

void TargetIOServer::filePutc()
{
    beginBlock();
    int character = int(nextWord()) & 0xFF;
    int64_t handle = nextWord();
    if (isOutputHandle(handle)) {
        toConsole(std::string(1, char(character)));
        result(character);
    } else if (FILE* open = file(handle)) {
        int status = fputc(character, open);
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::filePuts()
{
    beginBlock();
    std::string text = nextString();
    int64_t handle = nextWord();
    if (isOutputHandle(handle)) {
        toConsole(text);
        result(1);
    } else if (FILE* open = file(handle)) {
        int status = fputs(text.c_str(), open);
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::fileRead()
{
    beginBlock();
    uint32_t buffer = uint32_t(nextWord());
    uint64_t size = uint32_t(nextWord());
    uint64_t count = uint32_t(nextWord());
    int64_t handle = nextWord();
    FILE* open = nullptr;
    if (handle != 0 && !(open = file(handle)))
        return;
    if (size == 0 || count == 0) {
        result(0);
        return;
    }
    // The product of two 32-bit numbers fits in 64 bits.
    if (!transferable(buffer, size * count)) {
        result(-1);
        return;
    }
    if (handle == 0) {
        std::string line;
        if (!readLine(line))
            return;
        uint64_t length = std::min<uint64_t>(line.size(), size * count);
        m_data->pokeBytes(buffer, unsigned(length), reinterpret_cast<const unsigned char*>(line.data()));
        result(int64_t(length / size));
        return;
    }
    std::vector<unsigned char> bytes(size * count);
    size_t items = fread(bytes.data(), size, count, open);
    lastErrno = errno;
    if (items > 0)
        noteRead(handle);
    m_data->pokeBytes(buffer, unsigned(size * items), bytes.data());
    result(int64_t(items));
}

void TargetIOServer::fileWrite()
{
    beginBlock();
    uint32_t buffer = uint32_t(nextWord());
    uint64_t size = uint32_t(nextWord());
    uint64_t count = uint32_t(nextWord());
    int64_t handle = nextWord();
    bool console = isOutputHandle(handle);
    FILE* open = nullptr;
    if (!console && !(open = file(handle)))
        return;
    // Constants lie where no data range does, so only the memory knows what it can read.
    if (!addressable(buffer, size * count)) {
        result(-1);
        return;
    }
    std::string bytes(size * count, '\0');
    if (!bytes.empty())
        m_data->peekBytes(buffer, unsigned(bytes.size()), reinterpret_cast<unsigned char*>(bytes.data()));
    if (console) {
        toConsole(bytes);
        result(int64_t(count));
        return;
    }
    errno = 0;
    size_t items = fwrite(bytes.data(), size, count, open);
    lastErrno = errno;
    result(int64_t(items));
}

void TargetIOServer::fileSeek()
{
    beginBlock();
    int64_t handle = nextWord();
    int64_t offset = nextNumber(4);
    int64_t origin = nextWord();
    if (FILE* open = file(handle)) {
        int status = fseek(open, long(offset), int(origin));
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::fileSetPosition()
{
    beginBlock();
    int64_t handle = nextWord();
    uint32_t address = uint32_t(nextWord());
    if (FILE* open = file(handle)) {
        uint32_t position = uint32_t(m_data->peekNumber(address, 4));
        errno = 0;
        int status = fseek(open, long(position), SEEK_SET);
        lastErrno = errno;
        result(status);
    }
}

void TargetIOServer::fileTell()
{
    beginBlock();
    int64_t handle = nextWord();
    uint32_t destination = uint32_t(nextWord());
    if (FILE* open = file(handle)) {
        long position = ftell(open);
        lastErrno = errno;
        m_data->pokeNumber(destination, 4, uint64_t(position));
        result(position < 0 ? -1 : 0);
    }
}

void TargetIOServer::fileRewind()
{
    if (FILE* open = file(argument())) {
        rewind(open);
        lastErrno = errno;
        result(0);
    }
}

void TargetIOServer::fileLength()
{
    if (FILE* open = file(argument())) {
        long length = fseek(open, 0, SEEK_END) == 0 ? ftell(open) : -1;
        lastErrno = errno;
        fseek(open, 0, SEEK_SET);
        result(length);
    }
}

void TargetIOServer::fileClearError()
{
    if (FILE* open = file(argument())) {
        clearerr(open);
        result(0);
    }
}

void TargetIOServer::fileEnd()
{
    if (FILE* open = file(argument()))
        result(feof(open));
}

void TargetIOServer::fileError()
{
    if (FILE* open = file(argument()))
        result(ferror(open));
}

void TargetIOServer::removeFile()
{
    beginBlock();
    std::string name = nextString();
    errno = 0;
    int status = remove(name.c_str());
    lastErrno = errno;
    result(status);
}

void TargetIOServer::renameFile()
{
    beginBlock();
    std::string from = nextString();
    std::string to = nextString();
    errno = 0;
    int status = rename(from.c_str(), to.c_str());
    lastErrno = errno;
    result(status);
}

// A name that nothing has at this moment; made safely, since the host's own function is not.
void TargetIOServer::temporaryName()
{
    beginBlock();
    uint32_t buffer = uint32_t(nextWord());
    uint32_t size = uint32_t(nextWord());
    char name[] = P_tmpdir "/qburnXXXXXX";
    errno = 0;
    int fd = mkstemp(name);
    lastErrno = errno;
    if (fd >= 0) {
        close(fd);
        unlink(name);
    }
    if (fd < 0 || sizeof name > size) {
        result(-1);
        return;
    }
    m_data->pokeBytes(buffer, sizeof name, reinterpret_cast<const unsigned char*>(name));
    result(0);
}

void TargetIOServer::handleFilePrintf(FILE* open, const std::string& format)
{
    __printf_tag filePrintf;
    filePrintf.limit = INT_MAX;
    filePrintf.file = open;
    // A file that takes no more is not asked for each of a billion blanks.
    filePrintf.output = [](int character, __printf_tag* tag) {
        if (fputc(character, tag->file) == EOF) {
            tag->error = errno;
            tag->output = nullptr;
        }
    };
    __vfprintf(&filePrintf, format.c_str(), m_listFunctions, this);
    lastErrno = filePrintf.error;
    result(filePrintf.count);
}

void TargetIOServer::handleFileScanf(int64_t handle, FILE* open, const std::string& format)
{
    __scanf_source fileScanf;
    fileScanf.isString = false;
    fileScanf.file = open;
    fileScanf.getc = [](__scanf_source* source) {
        int character = fgetc(source->file);
        if (character == EOF && ferror(source->file))
            source->error = errno;
        source->taken += character != EOF;
        return character;
    };
    fileScanf.ungetc = [](int character, __scanf_source* source) {
        ungetc(character, source->file);
        --source->taken;
    };
    int items = __vfscanf(&fileScanf, format.c_str(), m_listFunctions, this);
    lastErrno = fileScanf.error;
    if (fileScanf.taken > 0)
        noteRead(handle);
    result(items);
}
