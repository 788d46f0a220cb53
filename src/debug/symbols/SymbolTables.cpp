#include "debug/symbols/SymbolTables.h"

#include "debug/symbols/SourceAddressMapping.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFfiles.h"

#include <algorithm>

namespace {

const HString* interned(const Path& path)
{
    return HString::intern(path.osPath());
}

QString text(const HString* string)
{
    return QString::fromUtf8(string->c_str(), string->length());
}

} // namespace

void SymbolTables::GiveBack::operator()(SymbolicDebug* table) const
{
    g_ZOFFfiles.release(table);
}

SymbolTables::List::iterator SymbolTables::find(const Path& path)
{
    Path wanted(path.osPath());
    return std::find_if(m_tables.begin(), m_tables.end(),
                        [&wanted](const Reference& table) { return table->path() == wanted; });
}

SymbolTables::Reference SymbolTables::load(const Path& path)
{
    Reference table(g_ZOFFfiles.getSymbolicDebug(path));
    if (std::any_of(m_tables.begin(), m_tables.end(),
                    [&table](const Reference& entry) { return entry.get() == table.get(); }))
        return nullptr;
    auto earlier = find(path);
    if (earlier == m_tables.end()) {
        m_tables.push_front(std::move(table));
        return nullptr;
    }
    return std::exchange(*earlier, std::move(table));
}

SymbolTables::List SymbolTables::unload(const Path& path)
{
    List unloaded;
    if (path.isEmpty())
        unloaded.swap(m_tables);
    else if (auto found = find(path); found != m_tables.end())
        unloaded.splice(unloaded.begin(), m_tables, found);
    return unloaded;
}

SymbolicDebug* SymbolTables::at(uint32_t address) const
{
    if (m_tables.empty())
        return nullptr;
    if (address != 0)
        for (const Reference& table : m_tables)
            if (table->GetInsn(address))
                return table.get();
    return m_tables.front().get();
}

ZOFFInsn* SymbolTables::insnAt(uint32_t address) const
{
    for (const Reference& table : m_tables)
        if (ZOFFInsn* insn = table->GetInsn(address))
            return insn;
    return nullptr;
}

ZOFFInsn* SymbolTables::insnBefore(uint32_t address) const
{
    for (const Reference& table : m_tables)
        if (ZOFFInsn* insn = table->insnBefore(address))
            return insn;
    return nullptr;
}

bool SymbolTables::linkerSymbol(const char* name, int64_t& value) const
{
    for (const Reference& table : m_tables)
        if (ZOFFSymbol* symbol = table->findGlobalSymbol(name)) {
            ZOFFEvaluation evaluation = symbol->evaluate();
            if (!evaluation.unresolved) {
                value = evaluation.value;
                return true;
            }
        }
    return false;
}

ZOFFType* SymbolTables::namedType(const char* name) const
{
    for (const Reference& table : m_tables)
        if (ZOFFType* type = table->findNamedType(name))
            return type;
    return nullptr;
}

int64_t SymbolTables::lineAddress(QString& file, const Path& path, int line) const
{
    const HString* source = interned(path);
    for (const Reference& table : m_tables) {
        uint32_t address = 0;
        QString name = table->path().osPathQString();
        if ((file.isEmpty() || file == name) && table->sourceMap().SourceToAddress(source, line, address)) {
            file = name;
            return address;
        }
    }
    return -1;
}

int SymbolTables::addressLine(uint32_t address, QString& file, Path& path) const
{
    for (const Reference& table : m_tables) {
        const HString* source = nullptr;
        int line = 0;
        if (table->sourceMap().AddressToSource(address, source, line)) {
            file = table->path().osPathQString();
            path = Path(text(source));
            return line;
        }
    }
    return -1;
}

const SymbolicDebug* SymbolTables::named(const QString& executable) const
{
    for (const Reference& table : m_tables)
        if (table->path().osPathQString() == executable)
            return table.get();
    return nullptr;
}

QStringList SymbolTables::executableNames() const
{
    QStringList names;
    for (const Reference& table : m_tables)
        names.append(table->path().osPathQString());
    return names;
}

QStringList SymbolTables::sourceFileNames(const QString& executable) const
{
    QStringList names;
    if (const SymbolicDebug* found = named(executable))
        for (auto& [file, lines] : found->sourceMap().files())
            names.append(text(file));
    return names;
}

QList<int> SymbolTables::lineNumbers(const QString& executable, const Path& source) const
{
    QList<int> numbers;
    const SymbolicDebug* found = named(executable);
    const SourceAddressMapping::Lines* lines =
        found ? found->sourceMap().getLineNumbers(interned(source)) : nullptr;
    if (lines)
        for (uint32_t line : *lines)
            numbers.append(int(line));
    return numbers;
}

QStringList SymbolTables::symbolNames(const QString& executable) const
{
    QStringList names;
    if (const SymbolicDebug* found = named(executable))
        for (const ZOFFSymbol* symbol : found->module()->allSymbols())
            if (symbol->name())
                names.append(text(symbol->name()));
    return names;
}
