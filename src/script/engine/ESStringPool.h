// The interned strings, one pool for the process and all its contexts. The pool never shrinks while it
// is in use: every distinct text that a script makes stays. One thread only.
#pragma once

#include "script/engine/ESString.h"
#include "script/engine/limits.h"

#include <QStringView>

class ESStringPool {
public:
    static ESString* intern(const QString& text);
    static ESString* intern(QStringView text);
    static ESString* intern(const char* latin1);
    static ESString* get(int index);
    static int count();

    // The decimal string of a number.
    static ESString* number(int n) { return n >= 0 ? number(unsigned(n)) : signedNumber(n); }
    static ESString* number(unsigned n)
    {
        if (n < unsigned(ESLimits::NumberStrings) && g_numbers[n])
            return g_numbers[n];
        return makeNumber(n);
    }
    // Notes that the number was met, if it was not before, and returns its place in the order of all names.
    static uint64_t meetNumber(unsigned n);
    // Null when the number was never interned: no object has a property of that name then.
    static ESString* findNumber(unsigned n);

    // The text of both, without building it when it is long. Throws ESFatalError "string too long"
    // beyond ESLimits::StringLength.
    static ESString* concat(ESString* left, ESString* right);
    // The string of one UTF-16 unit.
    static ESString* character(char16_t unit);

    // Deletes every entry. No context may be alive.
    static void clear();

private:
    static ESString* signedNumber(int n);
    static ESString* makeNumber(unsigned n);
    static ESString* g_numbers[ESLimits::NumberStrings];
};

// Names that the engine itself uses, set when the first context is built.
extern ESString *g_lengthString, *g_prototypeString, *g_nullString, *g_trueString, *g_falseString,
    *g_evalString, *g_argumentsString, *g_calleeString, *g_constructorString, *g_indexString, *g_inputString,
    *g_emptyString, *g_undefinedString, *g_objectString, *g_booleanString, *g_numberString, *g_stringString,
    *g_functionString, *g_valueOfString, *g_toStringString, *g_messageString, *g_nameString;
// Interns them; a context calls it.
void internWellKnownStrings();
