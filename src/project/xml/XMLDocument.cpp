#include "project/xml/XMLDocument.h"

#include "project/xml/XMLParser.h"
#include "project/xml/XMLWriter.h"
#include "project/xml/limits.h"

#include <QFile>
#include <QSaveFile>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A file descriptor that closes itself. Opening never waits, as it would for a pipe without a writer.
class OpenFile {
public:
    explicit OpenFile(const char* path) : m_descriptor(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    bool isOpen() const { return m_descriptor >= 0; }
    // Reads up to `size` bytes; fewer only at the end of the file. Negative on failure.
    ssize_t read(char* buffer, size_t size) const
    {
        size_t got = 0;
        while (got < size) {
            ssize_t count = ::read(m_descriptor, buffer + got, size - got);
            if (count < 0)
                return -1;
            if (count == 0)
                break;
            got += size_t(count);
        }
        return ssize_t(got);
    }
    bool isRegular(size_t& size) const
    {
        struct stat status;
        if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
            return false;
        size = size_t(status.st_size);
        return true;
    }

private:
    int m_descriptor;
};

} // namespace

XMLDocument::XMLDocument(bool keepText) : XMLNode(Kind::Document), m_pool(&m_ownPool), m_keepText(keepText) {}

XMLDocument::XMLDocument(XMLDocument& host)
    : XMLNode(Kind::Document), m_pool(host.m_pool), m_host(&host), m_keepText(host.m_keepText)
{
}

XMLDocument::~XMLDocument() = default;

XMLElement* XMLDocument::mkXMLElement(const char* tagName)
{
    return m_host ? m_host->mkXMLElement(tagName) : new XMLElement(tagName);
}

bool XMLDocument::readFile(const char* path, QByteArray& bytes)
{
    OpenFile file(path);
    size_t size = 0;
    if (!file.isOpen() || !file.isRegular(size) || size > XMLLimits::DocumentBytes)
        return false;
    bytes = QByteArray(qsizetype(size), Qt::Uninitialized);
    ssize_t got = file.read(bytes.data(), size);
    if (got < 0)
        return false;
    bytes.truncate(got);
    return true;
}

bool XMLDocument::load(const char* path)
{
    QByteArray bytes;
    if (!readFile(path, bytes)) {
        snprintf(m_errorText, sizeof m_errorText, "couldn't read %s", path);
        m_errorLine = 0;
        return false;
    }
    return parse(bytes.constData(), size_t(bytes.size())); // a QByteArray ends with a zero of its own
}

bool XMLDocument::loadFromString(const char* text)
{
    return parse(text, strlen(text));
}

bool XMLDocument::parse(const char* text, size_t size)
{
    while (firstChild())
        removeChild(firstChild());
    m_root = nullptr;
    m_version = m_encoding = m_documentType = nullptr;
    if (!m_host)
        m_ownPool.clear();
    m_sourceSize = size;
    CurrentPool current(m_pool);
    XMLParser parser;
    m_root = parser.parse(this, text);
    setError(XMLParser::statusText(parser.status()), parser.line());
    return parser.status() == XMLParser::Success;
}

void XMLDocument::setError(const char* text, unsigned line)
{
    snprintf(m_errorText, sizeof m_errorText, "%s", text);
    m_errorLine = line;
}

void XMLDocument::setVersion(const char* version)
{
    m_version = m_pool->copyString(version);
}

void XMLDocument::setEncoding(const char* encoding)
{
    m_encoding = m_pool->copyString(encoding);
}

void XMLDocument::setDocumentType(const char* type)
{
    m_documentType = m_pool->copyString(type);
}

void XMLDocument::setRoot(XMLElement* root)
{
    if (m_root)
        removeChild(m_root);
    m_root = root;
    appendChild(root);
}

QByteArray XMLDocument::toBytes(unsigned indent) const
{
    QByteArray out = "<?xml ";
    if (m_version)
        out.append(" version=\"").append(m_version).append('"');
    if (m_encoding)
        out.append(" encoding=\"").append(m_encoding).append('"');
    out += " ?>\n";
    if (m_documentType)
        out.append("<!DOCTYPE ").append(m_documentType).append(">\n");
    for (const XMLNode* child = firstChild(); child; child = child->nextSibling())
        XMLWriter(out, indent).write(child);
    out += '\n';
    return out;
}

bool XMLDocument::save(const char* path, unsigned indent)
{
    QSaveFile file(QFile::decodeName(path));
    QByteArray bytes = toBytes(indent);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        snprintf(m_errorText, sizeof m_errorText, "couldn't write %s", path);
        m_errorLine = 0;
        return false;
    }
    return true;
}

const char* XMLDocument::xmlDocumentType(const char* path)
{
    static char type[1025];
    char head[1025];
    OpenFile file(path);
    ssize_t size = file.isOpen() ? file.read(head, sizeof head - 1) : -1;
    if (size < 0)
        return nullptr;
    head[size] = 0;
    static constexpr char Mark[] = "<!DOCTYPE ";
    const char* at = strstr(head, Mark);
    if (!at)
        return nullptr;
    at += sizeof Mark - 1;
    while (*at && strchr(" \t\r\n\f\v", *at))
        ++at;
    size_t length = 0;
    for (; isalnum(uint8_t(at[length])) || at[length] == '_'; ++length)
        type[length] = at[length];
    type[length] = 0;
    return length ? type : nullptr;
}
