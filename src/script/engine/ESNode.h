// The tree between parser and code generator. Nodes live in their compiler and die with it.
#pragma once

#include "script/engine/ESTokens.h" // the kinds of nodes

#include <cstdint>

class ESCode;
class ESString;

struct ESNode {
    static constexpr int EmptyChain = 65535;

    // Heads of the chains of forward jumps to the end of this statement and to its continue point (in a
    // case clause: to its first instruction).
    int breakChain = EmptyChain;
    int continueChain = EmptyChain;
    int kind;
    double number = 0; // of a number: index in the code's numbers
    ESString* name = nullptr;
    int functionIndex = -1;
    ESNode* kids[4] = {};
    ESNode* next = nullptr;      // in a list: statements, arguments, elements, clauses
    ESNode* enclosing = nullptr; // of a function: the function around it
    ESCode* code = nullptr;      // of a function
    int line;
    int depth = 1;            // of the tree below, where a chain of binary operators counts once
    bool pure = true;         // evaluating it has no effect but its value
    bool insideWith = false;  // of a function: it was made inside a `with` of the function around it
    bool declaration = false; // a statement that declares a function, and has no value
    int count = 0;            // of a list's owner: its members

    ESNode(int k, int l) : kind(k), line(l) {}
};

// A list under construction.
struct ESNodeList {
    ESNode* first = nullptr;
    ESNode* last = nullptr;
    int count = 0;
    int depth = 0;
    bool pure = true;

    void add(ESNode* node)
    {
        (last ? last->next : first) = node;
        last = node;
        ++count;
        depth = node->depth > depth ? node->depth : depth;
        pure = pure && node->pure;
    }
};
