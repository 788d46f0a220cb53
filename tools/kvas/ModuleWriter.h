// Writes a laid-out program as an executable: module information, types, symbols, scopes, sections.
#pragma once

#include "tools/kvas/Expression.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/ZOFFWriter.h"

#include <map>
#include <string>

namespace kvas {

class ModuleWriter {
public:
    explicit ModuleWriter(Program& program) : m_program(program) {}

    std::string write();

private:
    void information();
    void symbols();
    void scope(Scope& scope);
    void section(const Section& section);
    void item(const Item& item);
    void instruction(const Item& item);
    void setPC(const Item& item);

    // Each makes the object if that has not been done, and answers its alias. They leave the machine's
    // stack as it was, so they come before anything is pushed that needs the object.
    int32_t typeAlias(Type* type);
    int32_t fileAlias(std::string_view file);
    void makeSymbol(Symbol* symbol); // its name and alias; what else is known of it comes later
    void describeSymbol(const Symbol* symbol);
    void prepareFunction(Type* type);
    void finishTypes();

    void expression(const Expr* expr);
    void location(Marker* marker);
    static bool isWritten(const Symbol* symbol);
    static bool isPlainNumber(const Expr* expr);

    Program& m_program;
    ZOFFWriter m_out;
    Evaluator m_evaluator;
    int32_t m_module = 0;
    std::map<std::string_view, int32_t> m_files;
    std::vector<Type*> m_unfinished; // pointers without target, structures without fields
    int64_t m_pc = -1;
    int32_t m_stackAdjust = 0;
    bool m_locus = false;
};

} // namespace kvas
