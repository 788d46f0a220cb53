// The record tags of an object file, written once: tag, name in the code, and name in a trace. Tags
// 0 to 7 are the literal values 0 to 7 themselves.
#pragma once

#include <cstdint>

// clang-format off
#define ZOFF_TAGS(X) \
    X(0x00, Lit0, "LIT") X(0x01, Lit1, "LIT") X(0x02, Lit2, "LIT") X(0x03, Lit3, "LIT") \
    X(0x04, Lit4, "LIT") X(0x05, Lit5, "LIT") X(0x06, Lit6, "LIT") X(0x07, Lit7, "LIT") \
    X(0x08, LitX, "LITX") \
    X(0x09, Null, "NULL") \
    X(0x0A, NullNull, "NULL_NULL") \
    X(0x0B, Add, "ADD") \
    X(0x0C, Sub, "SUB") \
    X(0x0D, Mul, "MUL") \
    X(0x0E, Div, "DIV") \
    X(0x0F, Mod, "MOD") \
    X(0x10, And, "AND") \
    X(0x11, Or, "OR") \
    X(0x12, Xor, "XOR") \
    X(0x13, Shl, "SHL") \
    X(0x14, Shr, "SHR") \
    X(0x15, Eq, "EQ") \
    X(0x16, Ne, "NE") \
    X(0x17, Gt, "GT") \
    X(0x18, Lt, "LT") \
    X(0x19, Ge, "GE") \
    X(0x1A, Le, "LE") \
    X(0x1B, LogAnd, "LAND") \
    X(0x1C, LogOr, "LOR") \
    X(0x1D, MkSymbol, "MKSYMBOL") \
    X(0x1F, SymbolVal, "SYMBOLVAL") \
    X(0x20, Alias, "ALIAS") \
    X(0x21, MkAlias, "MKALIAS") \
    X(0x22, MkStringZ, "MKSTRING") \
    X(0x23, MkString, "MKSTRING") \
    X(0x24, MarkerDef, "MARKERDEF") \
    X(0x25, MarkerRef, "MARKERREF") \
    X(0x26, StringPool, "STRINGPOOL") \
    X(0x27, Section, "SECTION") \
    X(0x28, MkSection, "MKSECTION") \
    X(0x29, SymbolDef, "SYMBOLDEF") \
    X(0x2A, SetType, "SETTYPE") \
    X(0x2B, SetName, "SETNAME") \
    X(0x2C, DefBytes, "DEFBYTES") \
    X(0x2D, Insn, "INSN") \
    X(0x2E, HiddenInsn, "INSN") \
    X(0x2F, Fill, "FILL") \
    X(0x30, Align, "ALIGN") \
    X(0x31, Origin, "ORIGIN") \
    X(0x32, Break, "BREAK") \
    X(0x33, Public, "PUBLIC") \
    X(0x35, Locus, "LOCUS") \
    X(0x36, MkFilename, "MKFILENAME") \
    X(0x37, SetPC, "SETPC") \
    X(0x38, SetBytes, "SETBYTES") \
    X(0x39, Char, "CHAR") \
    X(0x3A, Int, "INT") \
    X(0x3B, Unsigned, "UNSIGNED") \
    X(0x3C, OldStruc, "STRUC (obsolete)") \
    X(0x3D, Array, "ARRAY") \
    X(0x3E, CountedArray, "COUNTED_ARRAY") \
    X(0x3F, Ptr, "PTR") \
    X(0x40, Untyped, "UNTYPED") \
    X(0x41, Float, "FLOAT") \
    X(0x42, Function, "FUNCTION") \
    X(0x43, Member, "MEMBER") \
    X(0x44, StaticField, "STATIC_FIELD") \
    X(0x45, DynamicField, "DYNAMIC_FIELD") \
    X(0x46, ParamIn, "PARAMIN") \
    X(0x47, ParamOut, "PARAMOUT") \
    X(0x48, Library, "LIBRARY") \
    X(0x49, SetScope, "SETSCOPE") \
    X(0x4A, ScopeModule, "SCOPE_MODULE") \
    X(0x4B, ScopeFunction, "SCOPE_FUNCTION") \
    X(0x4C, ScopeBlock, "SCOPE_BLOCK") \
    X(0x4E, Dup, "DUP") \
    X(0x4F, Drop, "DROP") \
    X(0x50, Space, "SPACE") \
    X(0x51, Attribute, "ATTRIBUTE") \
    X(0x52, ForwardType, "FORWARDTYPE") \
    X(0x53, Nop, "NOP") \
    X(0x54, Protected, "PROTECTED") \
    X(0x55, Ashr, "ASHR") \
    X(0x56, Codelet, "CODELET") \
    X(0x57, Struc, "STRUC") \
    X(0x58, LinkOrderPriority, "LINK ORDER PRIORITY") \
    X(0x59, Patchable, "PATCHABLE") \
    X(0x5B, InstrumentationData, "INSTRUMENTATION DATA") \
    X(0x5C, Patched, "PATCHED") \
    X(0x5D, Register, "REGISTER") \
    X(0x5E, OtherOperator, "OPERATOR") \
    X(0x5F, LocalInsn, "LOCAL_INSN") \
    X(0x60, SetFlags, "SETFLAGS") \
    X(0x61, ResetLocus, "RESET LOCUS") \
    X(0x62, SetFctSymbol, "SET_FCT_SYMBOL") \
    X(0x63, AdjustStack, "ADJUST_STACK") \
    X(0x64, Init, "INIT") \
    X(0x65, SymbolLocus, "SYMBOL_LOCUS") \
    X(0x66, EndOfInfo, "END_OF_INFO") \
    X(0x67, ExtensionWord, "EXTENSION WORD") \
    X(0x68, DefAddr, "DEFADDR") \
    X(0x69, WordAddress, "ZOFF_WORD_ADDRESS") \
    X(0x6A, DataSpace, "MEMSPACE") \
    X(0x6B, CodeSpace, "MEMSPACE") \
    X(0x6C, EepromSpace, "MEMSPACE") \
    X(0x6D, PeripheralSpace, "MEMSPACE") \
    X(0x6E, BytePtr, "PTR-REP") \
    X(0x6F, WordPtr, "PTR-REP") \
    X(0x70, LinkIf, "LINKIF") \
    X(0x71, EndLinkIf, "ENDLINKIF")
// clang-format on

enum class ZOFFTag : uint8_t {
#define ZOFF_ENUMERATOR(tag, id, name) id = tag,
    ZOFF_TAGS(ZOFF_ENUMERATOR)
#undef ZOFF_ENUMERATOR
};

// Null for a number that is no tag.
const char* tagName(unsigned tag);
