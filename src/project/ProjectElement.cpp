#include "project/ProjectElement.h"

#include "project/xml/XMLNode.h"

#include <QFileInfo>

ProjectElement::~ProjectElement() = default;

const char* ProjectElement::tagName(Tag tag)
{
    static constexpr const char* Names[] = {"solution", "project", "folder", "file", "configuration"};
    return Names[tag];
}

ProjectElement* ProjectElement::appendChild(Tag tag)
{
    m_children.push_back(std::make_unique<ProjectElement>(tag, this));
    return m_children.back().get();
}

void ProjectElement::removeChild(ProjectElement* child)
{
    std::erase_if(m_children, [child](const auto& each) { return each.get() == child; });
}

ProjectElement* ProjectElement::makeConfiguration(const QString& name)
{
    std::unique_ptr<ProjectElement>& configuration = m_configurations[name];
    if (!configuration) {
        configuration = std::make_unique<ProjectElement>(Configuration, this);
        configuration->m_attributes.insert(QStringLiteral("Name"), name);
    }
    return configuration.get();
}

ProjectElement* ProjectElement::configuration(const QString& name) const
{
    auto found = m_configurations.find(name);
    return found == m_configurations.end() ? nullptr : found->second.get();
}

void ProjectElement::removeConfiguration(const QString& name)
{
    m_configurations.erase(name);
}

QString ProjectElement::getName() const
{
    auto name = m_attributes.constFind(QStringLiteral("Name"));
    if (name != m_attributes.constEnd())
        return name.value();
    if (m_tag == File && hasAttribute(QStringLiteral("file_name")))
        return QFileInfo(attribute(QStringLiteral("file_name"))).fileName();
    return QStringLiteral("<NULL>");
}

ProjectElement::Edits& ProjectElement::edits()
{
    if (!m_edits)
        m_edits = std::make_unique<Edits>();
    return *m_edits;
}

void ProjectElement::setAttribute(const QString& name, const QString& value)
{
    m_attributes.insert(name, value);
    edits().times.insert(name, QDateTime::currentDateTime());
}

void ProjectElement::removeAttribute(const QString& name)
{
    if (m_attributes.remove(name))
        edits().times.insert(name, QDateTime::currentDateTime());
}

void ProjectElement::setAttributesFrom(const XMLElement* element)
{
    for (const XMLAttribute* each = element->getAttributeList(); each; each = each->next)
        m_attributes.insert(QString::fromLatin1(each->name), xmlText(each->value));
}

void ProjectElement::getAttributesFrom(XMLElement* element) const
{
    for (auto it = m_attributes.constBegin(); it != m_attributes.constEnd(); ++it)
        element->setAttribute(it.key().toUtf8().constData(), it.value().toUtf8().constData());
}

QDateTime ProjectElement::modified(const QString& name) const
{
    return m_edits ? m_edits->times.value(name) : QDateTime();
}

void ProjectElement::clearModified()
{
    if (m_edits)
        m_edits->times.clear();
}

void ProjectElement::startTransaction()
{
    if (!edits().before)
        m_edits->before = std::make_unique<QMap<QString, QString>>(m_attributes);
}

void ProjectElement::commitTransaction()
{
    if (m_edits)
        m_edits->before.reset();
}

void ProjectElement::rollbackTransaction()
{
    if (!m_edits || !m_edits->before)
        return;
    m_attributes = *m_edits->before;
    m_edits->before.reset();
}
