// All strings, one pool for the process and all its contexts. Names stay while it is in use; texts are given
// back when a collection finds that no value leads to them. One thread only.
#pragma once

#include "script/engine/ESString.h"
#include "script/engine/limits.h"

#include <QStringView>
#include <cstddef>

class ESStringPool {
public:
    // The name of that text.
    static ESString* intern(const QString& text);
    static ESString* intern(QStringView text);
    static ESString* intern(const char* latin1);
    // The name that is equal to the string; the string itself may become it.
    static ESString* name(ESString* string) { return string->isName() ? string : makeName(string); }
    // That name if there is one, else null: no object has a property of that name then.
    static ESString* findName(ESString* string) { return string->isName() ? string : find(string->view()); }
    static ESString* get(int index) { return g_names[index]; }
    // Names that there are.
    static int count();

    // A text. Throws ESFatalError "string too long" beyond ESLimits::StringLength.
    static ESString* text(QStringView text);
    // A text of Latin-1 characters.
    static ESString* text(const char* latin1, int length);
    // The array index that the text is the decimal form of, or -1.
    static int arrayIndexOf(const ESString* string);
    // A text of units from within another.
    static ESString* part(ESString* whole, int from, int length);
    // A text of both. Throws as `text` does.
    static ESString* concat(ESString* left, ESString* right);
    // The string of one UTF-16 unit.
    static ESString* character(char16_t unit)
    {
        return unit < 256 && g_characters[unit] ? g_characters[unit] : makeCharacter(unit);
    }

    // The name of a number, its decimal form.
    static ESString* number(unsigned n)
    {
        if (n < unsigned(ESLimits::NumberStrings) && g_numbers[n])
            return g_numbers[n];
        return makeNumber(n);
    }
    static ESString* number(int n);
    // Null when the number is no name.
    static ESString* findNumber(unsigned n);
    // Notes that the number was met, if it was not before, and returns its place in the order of all strings.
    static uint64_t meetNumber(unsigned n);

    // Bytes that strings take, and may take at most.
    static size_t bytes() { return g_bytes; }
    static size_t limit() { return g_limit; }
    static void setLimit(size_t bytes) { g_limit = bytes; }
    // Frees the texts that are not marked, and takes the marks off.
    static void sweep();

    // Deletes every string. No context may be alive.
    static void clear();

private:
    friend class ESString;
    static ESString* makeName(ESString* string);
    static ESString* find(QStringView text);
    static ESString* makeNumber(unsigned n);
    static ESString* makeCharacter(char16_t unit);
    static ESString* allocate();
    static ESString* make(QStringView text);
    static ESString* enter(ESString* string, uint32_t hash);
    // Room for characters: at least so many, and the count is set to what there is.
    static char16_t* allocateUnits(uint32_t& units);
    static void freeUnits(char16_t* chars, uint32_t units);
    static void charge(size_t bytes);

    static ESString* g_numbers[ESLimits::NumberStrings];
    static ESString* g_characters[256];
    static ESString** g_names; // by index; the first is none
    static size_t g_bytes;
    static size_t g_limit;
};

// Names that the engine itself uses, set when the first context is built.
extern ESString *g_lengthString, *g_prototypeString, *g_nullString, *g_trueString, *g_falseString,
    *g_evalString, *g_argumentsString, *g_calleeString, *g_constructorString, *g_indexString, *g_inputString,
    *g_emptyString, *g_undefinedString, *g_objectString, *g_booleanString, *g_numberString, *g_stringString,
    *g_functionString, *g_valueOfString, *g_toStringString, *g_messageString, *g_nameString;
// Interns them; a context calls it.
void internWellKnownStrings();
