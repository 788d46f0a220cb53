#include "tools/kvas/ModuleWriter.h"

#include "tools/kvas/Instruction.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Tags.h"

#include <algorithm>

namespace kvas {

// Constants of one file are of no use to others, and their values would be taken for addresses.
bool ModuleWriter::isWritten(const Symbol* symbol)
{
    return symbol->isPublic || symbol->type || (symbol->isLabel && !symbol->isLocal);
}

// Comes to a literal in the executable.
bool ModuleWriter::isPlainNumber(const Expr* expr)
{
    if (expr->kind != Expr::Kind::Symbol)
        return expr->kind != Expr::Kind::Binary && expr->kind != Expr::Kind::Marker;
    return !isWritten(expr->symbol->meant()) && !expr->symbol->meant()->isLabel;
}

std::string ModuleWriter::write()
{
    information();
    symbols();
    for (Scope* s : m_program.scopes)
        scope(*s);
    finishTypes();
    for (const Section& s : m_program.sections)
        section(s);
    if (m_program.isProtected)
        m_out.tag(Tag::Protected);
    if (m_program.linkOrderPriority != 10)
        m_out.record(Tag::LinkOrderPriority, m_program.linkOrderPriority);
    return m_out.finish();
}

void ModuleWriter::information()
{
    for (int i = 0; i < 3; ++i) // parent, start, end
        m_out.tag(Tag::Null);
    m_out.tag(Tag::ScopeModule);
    m_out.string(m_program.moduleName);
    m_out.tag(Tag::SetName);
    m_module = m_out.newAlias();
    m_out.makeAlias(m_module);
    for (const std::string& library : m_program.libraries) {
        m_out.string(library);
        m_out.tag(Tag::Library);
    }
    for (const auto& [key, value] : m_program.attributes) {
        m_out.string(key);
        m_out.string(value);
        m_out.tag(Tag::Attribute);
    }
    m_out.tag(Tag::EndOfInfo);
}

void ModuleWriter::symbols()
{
    for (Symbol* symbol : m_program.symbols) {
        if (!symbol->isPublic)
            continue;
        makeSymbol(symbol);
        m_out.alias(symbol->alias);
        m_out.tag(Tag::Public);
    }
    for (Symbol* symbol : m_program.symbols) {
        if (isWritten(symbol) && symbol->alias < 0)
            makeSymbol(symbol);
    }
    for (Symbol* symbol : m_program.symbols) {
        if (isWritten(symbol))
            describeSymbol(symbol);
    }
    finishTypes();
    m_out.alias(m_module);
    for (Symbol* symbol : m_program.symbols) {
        if (!isWritten(symbol))
            continue;
        m_out.alias(symbol->alias);
        m_out.tag(Tag::SetScope);
    }
    m_out.tag(Tag::Drop);
}

int32_t ModuleWriter::fileAlias(std::string_view file)
{
    auto [place, isNew] = m_files.try_emplace(file, 0);
    if (isNew) {
        place->second = m_out.newAlias();
        m_out.string(place->first);
        m_out.tag(Tag::MakeFilename);
        m_out.makeAlias(place->second);
    }
    return place->second;
}

void ModuleWriter::makeSymbol(Symbol* symbol)
{
    bool hasLocus = symbol->declared.line && !symbol->declaredFile.empty();
    int32_t file = hasLocus ? fileAlias(symbol->declaredFile) : -1;
    symbol->alias = m_out.newAlias();
    m_out.string(symbol->name);
    m_out.tag(Tag::MakeSymbol);
    if (hasLocus) {
        m_out.alias(file);
        m_out.record(Tag::SymbolLocus, symbol->declared.line);
    }
    if (symbol->patched)
        m_out.record(Tag::Patched, 1);
    m_out.makeAlias(symbol->alias);
}

// All symbols that have names for expressions are made by then: a function's type may lead to a parameter
// that lies at the function itself.
void ModuleWriter::describeSymbol(const Symbol* symbol)
{
    int32_t type = symbol->type ? typeAlias(symbol->type) : -1;
    if (symbol->codelet >= 0) {
        m_out.alias(symbol->alias);
        m_out.record(Tag::Codelet, symbol->codelet);
    }
    if (symbol->patchable) {
        m_out.alias(symbol->alias);
        m_out.record(Tag::Patchable, symbol->patchValue);
    }
    if (symbol->value) {
        m_out.alias(symbol->alias);
        expression(symbol->value);
        m_out.tag(Tag::SymbolDef);
    }
    if (type >= 0) {
        m_out.alias(symbol->alias);
        m_out.alias(type);
        m_out.tag(Tag::SetType);
    }
}

int32_t ModuleWriter::typeAlias(Type* type)
{
    if (type->alias >= 0)
        return type->alias;
    bool refersLater = type->kind == Type::Kind::Pointer || type->kind == Type::Kind::Struct;
    int32_t base = type->base && !refersLater ? typeAlias(type->base) : -1;
    int32_t counter = type->counter ? typeAlias(type->counter) : -1;
    if (type->kind == Type::Kind::Function)
        prepareFunction(type);
    switch (type->kind) {
    case Type::Kind::Simple:
    case Type::Kind::Float: m_out.record(type->tag, type->size); break;
    case Type::Kind::Untyped: m_out.record(Tag::Untyped, type->size); break;
    case Type::Kind::Pointer: m_out.record(Tag::ForwardType, type->size); break;
    case Type::Kind::Struct: m_out.record(Tag::Struct, type->size); break;
    case Type::Kind::Array:
        m_out.alias(base);
        m_out.record(Tag::Array, type->count);
        break;
    case Type::Kind::CountedArray:
        m_out.alias(counter);
        m_out.alias(base);
        m_out.record(Tag::CountedArray, type->count);
        break;
    case Type::Kind::Qualified:
        m_out.alias(base);
        m_out.tag(type->tag);
        break;
    case Type::Kind::Member:
        m_out.alias(base);
        m_out.tag(Tag::Member);
        break;
    case Type::Kind::Function:
        m_out.literal(0);
        m_out.literal(type->frameSize);
        m_out.record(Tag::Function, type->savedRegisters);
        for (Symbol* parameter : type->in) {
            m_out.alias(parameter->alias);
            m_out.tag(Tag::ParamIn);
        }
        for (Symbol* result : type->out) {
            m_out.alias(result->alias);
            m_out.tag(Tag::ParamOut);
        }
        break;
    }
    if (!type->name.empty()) {
        m_out.string(type->name);
        m_out.tag(Tag::SetName);
    }
    type->alias = m_out.newAlias();
    m_out.makeAlias(type->alias);
    if (refersLater)
        m_unfinished.push_back(type);
    return type->alias;
}

void ModuleWriter::prepareFunction(Type* type)
{
    for (std::vector<Symbol*>* symbols : {&type->in, &type->out}) {
        for (Symbol* symbol : *symbols) {
            makeSymbol(symbol);
            describeSymbol(symbol);
        }
    }
}

// Pointers get their targets and structures their fields when all types that they lead to can be made.
void ModuleWriter::finishTypes()
{
    for (size_t i = 0; i < m_unfinished.size(); ++i) {
        Type* type = m_unfinished[i];
        if (type->kind == Type::Kind::Pointer) {
            int32_t target = typeAlias(type->base);
            m_out.alias(type->alias);
            m_out.alias(target);
            m_out.tag(Tag::Pointer);
            m_out.tag(type->tag);
            continue;
        }
        for (const Field& field : type->fields)
            typeAlias(field.type);
        m_out.alias(type->alias);
        for (const Field& field : type->fields) {
            m_out.string(field.name);
            if (field.isStatic) {
                expression(field.value);
                m_out.alias(field.type->alias);
                m_out.tag(Tag::StaticField);
            } else {
                m_out.literal(field.bitOffset);
                m_out.literal(field.bitSize);
                m_out.alias(field.type->alias);
                m_out.tag(Tag::DynamicField);
            }
        }
        m_out.tag(Tag::Drop);
    }
    m_unfinished.clear();
}

void ModuleWriter::expression(const Expr* expr)
{
    switch (expr->kind) {
    case Expr::Kind::Constant: m_out.literal(expr->value); break;
    case Expr::Kind::Register: m_out.record(Tag::Register, expr->value); break;
    case Expr::Kind::Marker: m_out.record(Tag::MarkerRef, expr->marker->number); break;
    case Expr::Kind::SectionStart:
    case Expr::Kind::SectionSize: m_out.literal(m_evaluator.evaluate(expr).number); break;
    case Expr::Kind::Symbol: {
        Symbol* symbol = expr->symbol->meant();
        if (isWritten(symbol)) {
            m_out.alias(symbol->alias);
            m_out.tag(Tag::SymbolValue);
        } else if (symbol->isLabel) {
            expression(symbol->value);
        } else {
            m_out.literal(m_evaluator.evaluate(expr).number);
        }
        break;
    }
    case Expr::Kind::Binary:
        expression(expr->left);
        expression(expr->right);
        m_out.tag(expr->tag);
        break;
    }
}

void ModuleWriter::location(Marker* marker)
{
    m_out.record(Tag::MarkerRef, marker->number);
}

void ModuleWriter::scope(Scope& scope)
{
    for (Symbol* symbol : scope.symbols) {
        if (symbol->alias >= 0) // a parameter, known by the function's type
            continue;
        makeSymbol(symbol);
        describeSymbol(symbol);
    }
    m_out.alias(scope.parent ? scope.parent->alias : m_module);
    location(scope.start);
    location(scope.end);
    m_out.tag(scope.kind);
    scope.alias = m_out.newAlias();
    m_out.tag(Tag::Dup);
    m_out.makeAlias(scope.alias);
    for (Symbol* symbol : scope.symbols) {
        m_out.alias(symbol->alias);
        m_out.tag(Tag::SetScope);
    }
    if (scope.function) {
        m_out.alias(scope.function->alias);
        m_out.tag(Tag::SetFunctionSymbol);
    } else {
        m_out.tag(Tag::Drop);
    }
}

void ModuleWriter::section(const Section& section)
{
    for (const Fragment& fragment : section.fragments) {
        for (const Item& it : fragment.items) {
            if (it.kind == ItemKind::Locus)
                fileAlias(it.text);
        }
    }
    m_out.string(section.name);
    m_out.tag(Tag::MakeSection);
    m_out.tag(Tag::Section);
    m_out.record(Tag::SetFlags, section.flags());
    for (const Fragment& fragment : section.fragments) {
        m_out.tag(Tag::Break);
        m_pc = -1; // the break itself is placed by the next change of pc
        if (m_locus)
            m_out.tag(Tag::ResetLocus);
        m_locus = false;
        for (const Item& it : fragment.items)
            item(it);
    }
}

void ModuleWriter::setPC(const Item& item)
{
    if (int64_t(item.pc) != m_pc) {
        m_pc = item.pc;
        m_out.record(Tag::SetPC, m_pc);
    }
    if (item.stackAdjust != m_stackAdjust) {
        m_stackAdjust = item.stackAdjust;
        m_out.record(Tag::AdjustStack, m_stackAdjust);
    }
}

void ModuleWriter::item(const Item& item)
{
    if (item.dropped)
        return;
    setPC(item);
    switch (item.kind) {
    case ItemKind::Instruction: instruction(item); break;
    case ItemKind::Bytes:
    case ItemKind::Address: {
        expression(item.operand);
        if (item.kind == ItemKind::Bytes)
            m_out.record(Tag::DefBytes, item.size);
        else
            m_out.tag(Tag::DefAddress);
        char bytes[4];
        for (unsigned i = 0; i < item.length; ++i)
            bytes[i] = char(uint64_t(item.value) >> (8 * i));
        m_out.bytes({bytes, item.length});
        m_out.tag(Tag::SetBytes);
        break;
    }
    case ItemKind::Fill:
        m_out.literal(item.fill);
        m_out.record(Tag::Fill, item.count);
        break;
    case ItemKind::Align: m_out.record(Tag::Align, item.count); break;
    case ItemKind::Origin: m_out.record(Tag::Origin, item.count); break;
    case ItemKind::Space:
        expression(item.operand);
        m_out.tag(Tag::Space);
        break;
    case ItemKind::Init:
        m_out.string(item.text);
        m_out.tag(Tag::Init);
        break;
    case ItemKind::LinkIf:
        expression(item.operand);
        m_out.tag(Tag::LinkIf);
        break;
    case ItemKind::EndLinkIf: m_out.tag(Tag::EndLinkIf); break;
    case ItemKind::Mark:
        if (item.marker->name.empty())
            m_out.tag(Tag::Null);
        else
            m_out.string(item.marker->name);
        m_out.record(Tag::MarkerDef, item.marker->number);
        break;
    case ItemKind::Locus:
        m_out.alias(m_files.at(item.text));
        m_out.record(Tag::Locus, item.count);
        m_locus = true;
        break;
    case ItemKind::NoLocus:
        m_out.tag(Tag::ResetLocus);
        m_locus = false;
        break;
    }
}

void ModuleWriter::instruction(const Item& item)
{
    uint64_t opcode = encodeInstruction(item, item.value);
    // A plain number reads better in its disassembled form, which needs no operand.
    if (item.operand && !isPlainNumber(item.operand))
        expression(item.operand);
    else
        m_out.tag(Tag::Null);
    m_out.record(item.hidden ? Tag::HiddenInsn : Tag::Insn, int64_t(opcode));
    char bytes[8];
    unsigned words = item.size;
    for (unsigned i = 0; i < words; ++i) { // the prefix word of the highest bits stands first
        uint16_t word = uint16_t(opcode >> (16 * (words - 1 - i)));
        bytes[2 * i] = char(word);
        bytes[2 * i + 1] = char(word >> 8);
    }
    m_out.bytes({bytes, 2 * words});
    m_out.tag(Tag::SetBytes);
}

} // namespace kvas
