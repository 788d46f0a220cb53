// An XML file as a tree: elements, attributes in double quotes, text, comments, CDATA, one
// declaration and one doctype line. The document is the node above the root element. It owns the
// pool in which all its nodes live, so a node is good until the document dies or loads again.
//
// Characters are bytes: the encoding is stored and written back, and nothing is converted.
#pragma once

#include "project/xml/XMLNode.h"
#include "support/Pool.h"

class XMLDocument : public XMLNode {
public:
    // With `keepText` the text between tags becomes XMLData nodes; without it that text is dropped.
    explicit XMLDocument(bool keepText);
    ~XMLDocument() override;

    // Both answer false on failure, with errorText() and errorLine() telling why; what was built so
    // far stays. A file without any element is read with success and has no root.
    bool load(const char* path);
    bool loadFromString(const char* text);
    // Writes the whole file or nothing; `indent` is the number of blanks for each depth.
    bool save(const char* path, unsigned indent);
    // The text that save() writes.
    QByteArray toBytes(unsigned indent) const;

    // The name behind "<!DOCTYPE " in the first 1,024 bytes of a file, or null. It is held in a static
    // buffer until the next call.
    static const char* xmlDocumentType(const char* path);

    // Makes the element for a tag, in the current pool; a derived document makes its own kind.
    virtual XMLElement* mkXMLElement(const char* tagName);

    XMLElement* root() const { return m_root; }
    // These are null when the file has none. Setting keeps a copy.
    const char* version() const { return m_version; }
    const char* encoding() const { return m_encoding; }
    const char* documentType() const { return m_documentType; }
    void setVersion(const char* version);
    void setEncoding(const char* encoding);
    void setDocumentType(const char* type);
    // For a document that is built by hand; `root` becomes the last child.
    void setRoot(XMLElement* root);

    bool keepsText() const { return m_keepText; }
    const char* errorText() const { return m_errorText; }
    unsigned errorLine() const { return m_errorLine; }
    void setError(const char* text, unsigned line);
    Pool& pool() { return *m_pool; }

    // A document does not live in a pool itself.
    static void* operator new(size_t size) { return ::operator new(size); }
    static void operator delete(void* at) { ::operator delete(at); }

protected:
    // A document whose nodes live in the pool of another one and are made by it, so that they can be
    // moved there. Its doctype and errors are its own.
    explicit XMLDocument(XMLDocument& host);

    // Size in bytes of the text that was parsed last.
    size_t sourceSize() const { return m_sourceSize; }

private:
    friend class XMLParser;
    bool parse(const char* text, size_t size);
    static bool readFile(const char* path, QByteArray& bytes);

    Pool m_ownPool;
    Pool* m_pool;
    XMLDocument* m_host = nullptr;
    bool m_keepText;
    XMLElement* m_root = nullptr;
    const char* m_version = nullptr;
    const char* m_encoding = nullptr;
    const char* m_documentType = nullptr;
    size_t m_sourceSize = 0;
    unsigned m_errorLine = 0;
    char m_errorText[1024] = {};
};
