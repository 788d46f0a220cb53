// An XML document that rewrites its own tree after loading, by a small macro language written as
// elements: if, ifnot, ifdef, ifndef, define, switch, include and for. What load() leaves behind holds
// none of them any more.
//
// The macro table is one for the whole document, read and changed in document order: a `define` holds
// for all that follows it, in included files too. The body of a `for` and an include with `macros` of
// its own work on a copy of the table.
#pragma once

#include "project/xml/MacroText.h"
#include "project/xml/XMLDocument.h"
#include "project/xml/XMLNode.h"

#include <QStringList>

class XMLPP2 : public XMLDocument {
public:
    using Macros = MacroText::Macros;

    using XMLDocument::XMLDocument;

    // With what the names of included files are expanded, whatever the document's own table says.
    void setFileMacros(const Macros& macros) { m_fileMacros = macros; }

    // `macros` are items `name=value` joined by ";". With `expand`, attribute values are expanded
    // before an element is looked at. Answers false when the file does not load; faults of the macro
    // language go to error(). Throws HException when a macro expands without end.
    bool load(const char* path, const char* macros, bool expand);

    // Rewrites the children of a node of this document. `file` is the file that relative names of
    // included files count from.
    void processConditionals(XMLNode* parent, const QString& file, const Macros& macros, bool expand);

    // Replaces the attribute values that hold a "$".
    void expandAttributeMacros(XMLElement* element, const Macros& macros);
    // A deep copy, with the attribute values of every copied element expanded.
    XMLElement* copyElementAndExpandAttributeMacros(XMLElement* element, const Macros& macros);

    const Macros& macros() const { return m_macros; }
    // Every file that the last load read, the document's own first.
    const QStringList& files() const { return m_files; }

protected:
    // Takes one message; the element in question is dropped and the work goes on when it returns.
    virtual void error(const QString& message) = 0;

    // Starts the accounts against the limits anew; load() does so by itself.
    void beginLoad(const QString& file, const Macros& macros);
    // Reads another file into the pool of this document. The root is handed over without a parent.
    // Null when the file does not load or is empty, which has gone to error().
    XMLElement* loadMaterial(const QString& file);
    // The name of a file as it is named in `file`: made to count from that file's directory.
    static QString nameFrom(const QString& file, const QString& name);
    // False, after one message, when this nests too deep or the document has grown beyond the limits.
    bool mayNest(unsigned depth);

    // The place in the document: where relative names count from, and what bounds the recursion.
    struct Context {
        QString file;
        bool expand;
        unsigned depth;    // of elements
        unsigned includes; // of files inside each other
    };
    void process(XMLNode* parent, const Context& context, Macros& macros);
    const Macros& fileMacros() const { return m_fileMacros; }

private:
    void processElement(XMLElement* element, const Context& context, Macros& macros);
    void keepOrDrop(XMLElement* element, bool keep, const Context& context, Macros& macros);
    void define(XMLElement* element, Macros& macros);
    void choose(XMLElement* element, const Context& context, Macros& macros);
    void include(XMLElement* element, const Context& context, Macros& macros);
    void repeat(XMLElement* element, const Context& context, Macros& macros);
    void expandAll(XMLNode* node, const Macros& macros);
    static bool conditionHolds(XMLElement* element, const Macros& macros);
    static bool listHolds(const QString& list, const QString& value);
    static void replaceByChildren(XMLElement* element, XMLNode* source);
    void stop(const QString& reason);
    void produced(size_t bytes);

    Macros m_macros;
    Macros m_fileMacros;
    QStringList m_files;
    bool m_stopped = false; // a limit was passed: nothing more is included or copied
    unsigned m_includes = 0;
    unsigned m_rounds = 0;
    size_t m_produced = 0;
};
