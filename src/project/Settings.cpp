#include "project/Settings.h"

#include "project/xml/XMLDocument.h"
#include "project/xml/XMLNode.h"
#include "project/xml/XMLWriter.h"

#include <QFile>
#include <QLockFile>
#include <QSaveFile>

#include <cstring>

namespace {

constexpr char DocumentType[] = "Forgeline_Settings_File";
constexpr int LockWait = 5000; // milliseconds; another process holds the lock for one short write

// White space at the start of a text is lost on reading, so it is written as references.
void appendValue(QByteArray& out, const QByteArray& value)
{
    qsizetype at = 0;
    for (; at < value.size() && value[at] == ' '; ++at)
        out += "&#x20;";
    XMLWriter::escape(out, std::string_view(value).substr(size_t(at)));
}

} // namespace

bool Settings::read(Table& table)
{
    table.clear();
    XMLDocument document(true);
    if (!document.load(m_path.osPath().c_str()) || !document.root() || !document.documentType() ||
        strcmp(document.documentType(), DocumentType) != 0)
        return false;
    for (XMLElement* element = document.root()->firstElement(); element; element = element->nextElement()) {
        if (!element->isNamed("setting") || !element->hasAttribute("name"))
            continue;
        QByteArray text;
        for (XMLNode* node = element->firstChild(); node; node = node->nextSibling())
            if (node->kind() == XMLNode::Kind::Data || node->kind() == XMLNode::Kind::CDATASection)
                text += static_cast<XMLData*>(node)->data();
        table.insert(element->attributeText("name"), {xmlText(text.constData()), false});
    }
    return true;
}

void Settings::load()
{
    if (m_path.isEmpty())
        return;
    m_time = QFileInfo(m_path.osPathQString()).lastModified();
    read(m_entries);
    m_loaded = m_entries;
}

bool Settings::changed() const
{
    for (const Setting& setting : m_entries)
        if (setting.modified)
            return true;
    for (auto it = m_loaded.constBegin(); it != m_loaded.constEnd(); ++it)
        if (!m_entries.contains(it.key()))
            return true;
    return false;
}

// Entries changed or removed here win; all others take the file's state.
void Settings::mergeChanges(const Table& inFile)
{
    Table merged = inFile;
    for (auto it = m_loaded.constBegin(); it != m_loaded.constEnd(); ++it)
        if (!m_entries.contains(it.key()))
            merged.remove(it.key());
    for (auto it = m_entries.constBegin(); it != m_entries.constEnd(); ++it)
        if (it.value().modified)
            merged.insert(it.key(), it.value());
    m_entries = merged;
}

bool Settings::sync()
{
    if (m_path.isEmpty())
        return false;
    if (!changed()) {
        if (QFileInfo(m_path.osPathQString()).lastModified() != m_time)
            load();
        return true;
    }
    if (!Path::ensureDirExists(m_path.osPathQString()))
        return false;
    QLockFile lock(m_path.osPathQString() + QLatin1String(".lock"));
    if (!lock.tryLock(LockWait))
        return false;
    // Always read again: a file time is too coarse to tell that nobody wrote since.
    Table inFile;
    read(inFile);
    mergeChanges(inFile);
    return write();
}

bool Settings::save()
{
    if (m_path.isEmpty() || !Path::ensureDirExists(m_path.osPathQString()))
        return false;
    QLockFile lock(m_path.osPathQString() + QLatin1String(".lock"));
    return lock.tryLock(LockWait) && write();
}

// A file of another kind that stands at our path is somebody else's, and is left alone.
bool Settings::mayReplaceFile() const
{
    QFileInfo info(m_path.osPathQString());
    if (!info.exists() || info.size() == 0)
        return true;
    const char* type = XMLDocument::xmlDocumentType(m_path.osPath().c_str());
    return type && strcmp(type, DocumentType) == 0;
}

bool Settings::write()
{
    if (!mayReplaceFile())
        return false;
    QByteArray bytes = QByteArray("<!DOCTYPE ") + DocumentType + ">\n<settings>\n";
    for (auto it = m_entries.constBegin(); it != m_entries.constEnd(); ++it) {
        bytes += "  <setting name=\"";
        XMLWriter::escape(bytes, it.key().toStdString());
        bytes += "\">";
        appendValue(bytes, it.value().value.toUtf8());
        bytes += "</setting>\n";
    }
    bytes += "</settings>\n";
    QSaveFile file(m_path.osPathQString());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return false;
    for (Setting& setting : m_entries)
        setting.modified = false;
    m_loaded = m_entries;
    m_time = QFileInfo(m_path.osPathQString()).lastModified();
    return true;
}

QString Settings::readEntry(const QString& key, const QString& otherwise, bool* found) const
{
    auto it = m_entries.constFind(key);
    if (found)
        *found = it != m_entries.constEnd();
    return it != m_entries.constEnd() ? it.value().value : otherwise;
}

void Settings::writeEntry(const QString& key, const QString& value)
{
    m_entries.insert(key, {value, true});
}

void Settings::removeEntry(const QString& key)
{
    m_entries.remove(key);
}
