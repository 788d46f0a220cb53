// One running function of the machine.
#pragma once

#include "script/engine/ESValue.h"

class ESCode;
class ESThread;
struct ESObject;
struct ESScope;
struct ESStep;

struct ESFrame {
    ESStep* ip;         // the step being carried out; while it calls, the call
    ESValue* registers; // formal parameters, then locals
    ESValue* base;      // the first argument; the stack ends here again afterwards
    const ESThread* thread;
    ESScope* scope; // around the function
    ESScope* callerScope;
    ESObject* callerSelf;
    ESObject* made; // the object under construction, or null
    ESCode* code;
    int argc;   // as called, at least the formal count
    bool entry; // returns to native code
};
