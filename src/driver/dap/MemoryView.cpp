#include "driver/dap/MemoryView.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/DapContext.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"

#include <QJsonArray>

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t InstructionAlignment = 2; // bytes, and the least that an instruction has
constexpr int64_t MaximumInstructionBytes = 8;

// The name of a memory as the debugger has it; data when none is named.
QString spaceOf(SymbolicDebuggerInterface& debugger, const MemoryReference& reference)
{
    QString name = reference.space.isEmpty() ? QString::fromLatin1(MemoryReference::Data) : reference.space;
    const QStringList spaces = debugger.getMemorySpaces();
    for (const QString& space : spaces)
        if (space.compare(name, Qt::CaseInsensitive) == 0)
            return space;
    throw RequestFailure(QStringLiteral("the target has no memory \"%1\"").arg(name));
}

} // namespace

uint32_t MemoryView::readable(const QString& space, uint32_t address, uint32_t count) const
{
    return std::min(m_context.debugger.getMemoryRange(space, address), count);
}

QJsonObject MemoryView::read(const RequestArguments& arguments) const
{
    MemoryReference from(arguments.text("memoryReference"), arguments.number("offset", 0));
    int count = arguments.count("count");
    if (uint32_t(count) > DapLimits::MemoryBytes)
        throw RequestFailure("more than 1 MB at a time");
    QString space = spaceOf(m_context.debugger, from);
    QByteArray bytes(readable(space, from.address, uint32_t(count)), 0);
    if (!bytes.isEmpty() && m_context.debugger.getMemory(space, from.address, unsigned(bytes.size()),
                                                         reinterpret_cast<unsigned char*>(bytes.data())) == 0)
        bytes.clear();
    QJsonObject body{{QStringLiteral("address"), MemoryReference::text(from.address)}};
    if (bytes.size() < count)
        body.insert(QStringLiteral("unreadableBytes"), int(count - bytes.size()));
    if (!bytes.isEmpty())
        body.insert(QStringLiteral("data"), QString::fromLatin1(bytes.toBase64()));
    return body;
}

QJsonObject MemoryView::write(const RequestArguments& arguments) const
{
    MemoryReference to(arguments.text("memoryReference"), arguments.number("offset", 0));
    auto decoded = QByteArray::fromBase64Encoding(arguments.text("data").toLatin1(),
                                                  QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        throw RequestFailure("argument \"data\" is not in base64");
    QString space = spaceOf(m_context.debugger, to);
    const QByteArray& bytes = *decoded;
    uint32_t count = readable(space, to.address, uint32_t(bytes.size()));
    if (count < uint32_t(bytes.size()) && !arguments.flag("allowPartial", false))
        throw RequestFailure("the memory ends in front of the last byte");
    if (count > 0 &&
        m_context.debugger.setMemory(space, to.address, count,
                                     reinterpret_cast<const unsigned char*>(bytes.constData())) == 0)
        throw RequestFailure("the memory cannot be written");
    return {{QStringLiteral("bytesWritten"), int(count)}};
}

// Code is not marked where instructions begin, so those in front of an address are found by reading on from
// far enough in front of it: prefix words are the only ones that an instruction can be longer by.
QJsonObject MemoryView::disassemble(const RequestArguments& arguments) const
{
    SymbolicDebuggerInterface& debugger = m_context.debugger;
    uint32_t base = MemoryReference::code(arguments.text("memoryReference"), arguments.number("offset", 0));
    int64_t skip = arguments.number("instructionOffset", 0);
    int count = arguments.count("instructionCount");
    if (count > DapLimits::Instructions || std::abs(skip) > DapLimits::Instructions)
        throw RequestFailure("too many instructions");
    base -= base % InstructionAlignment;

    std::vector<int64_t> addresses;
    int64_t at = base;
    if (skip < 0) {
        int64_t from = std::max<int64_t>(0, at - (-skip + 1) * MaximumInstructionBytes);
        uint32_t length = 0;
        for (int64_t address = from; address < at; address += std::max(length, InstructionAlignment)) {
            debugger.instructionText(uint32_t(address), length);
            addresses.push_back(address);
        }
        size_t wanted = size_t(-skip);
        if (addresses.size() > wanted)
            addresses.erase(addresses.begin(), addresses.end() - ptrdiff_t(wanted));
        // In front of all memory there is nothing, in as many lines as were asked for.
        addresses.insert(addresses.begin(), wanted - addresses.size(), -1);
    }
    for (int64_t i = 0; i < skip; ++i)
        at = following(at);
    while (addresses.size() < size_t(count)) {
        addresses.push_back(at);
        at = following(at);
    }
    addresses.resize(size_t(count));

    QJsonArray list;
    Path lastPath;
    int lastLine = 0;
    for (int64_t address : addresses)
        list.append(instruction(address, lastPath, lastLine));
    return {{QStringLiteral("instructions"), list}};
}

int64_t MemoryView::following(int64_t address) const
{
    uint32_t length = 0;
    if (address <= UINT32_MAX)
        m_context.debugger.instructionText(uint32_t(address), length);
    return address + std::max(length, InstructionAlignment);
}

// The source line is told where it changes.
QJsonObject MemoryView::instruction(int64_t address, Path& lastPath, int& lastLine) const
{
    SymbolicDebuggerInterface& debugger = m_context.debugger;
    uint32_t length = 0;
    bool exists = address >= 0 && address <= UINT32_MAX;
    QString text = exists ? debugger.instructionText(uint32_t(address), length) : QString();
    QJsonObject body{{QStringLiteral("address"), address < 0
                                                     ? QStringLiteral("-1")
                                                     : QLatin1String("0x") + QString::number(address, 16)}};
    if (text.isNull()) {
        body.insert(QStringLiteral("instruction"), QStringLiteral("no code"));
        body.insert(QStringLiteral("presentationHint"), QStringLiteral("invalid"));
        return body;
    }
    // The words in hexadecimal stand in front of the text.
    qsizetype blank = text.indexOf(QLatin1Char(' '));
    body.insert(QStringLiteral("instructionBytes"), text.left(blank));
    body.insert(QStringLiteral("instruction"), blank < 0 ? text : text.mid(blank).trimmed());
    QString executable;
    Path path;
    int line = debugger.getAddressLine(uint32_t(address), executable, path);
    if (line > 0 && (line != lastLine || path != lastPath)) {
        body.insert(QStringLiteral("location"), m_context.sources.source(path));
        body.insert(QStringLiteral("line"), m_context.client.line(line));
    }
    lastLine = line;
    lastPath = path;
    return body;
}
