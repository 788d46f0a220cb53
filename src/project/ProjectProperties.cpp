#include "project/ProjectProperties.h"

#include "project/FileTypes.h"

namespace {

struct Row {
    const char* saveName;
    PropertyClass::Type type;
    const char* title;
    const char* otherwise;
    ProjectProperties::Storage storage;
};

constexpr Row Rows[] = {
#define X(id, name, type, title, otherwise, storage)                                                         \
    {name, PropertyClass::type, title, otherwise, ProjectProperties::storage},
    PROJECT_PROPERTIES(X)
#undef X
};

} // namespace

ProjectProperties::ProjectProperties()
{
    for (const Row& row : Rows) {
        auto made = std::make_unique<PropertyClass>(
            QString::fromLatin1(row.saveName), row.type, QString::fromLatin1(row.otherwise),
            QStringLiteral("Project"), QStringLiteral("Project"), QString::fromLatin1(row.title), QString());
        made->setReadOnly(row.storage == Derived);
        made->setPerConfiguration(row.storage == Setting);
        m_classes.push_back(std::move(made));
    }
    m_classes[FileType]->setEnumerates(fileTypeNames());
    m_classes[FileCodec]->setEnumerates(
        {QStringLiteral("Default"), QStringLiteral("Latin1"), QStringLiteral("UTF-8")});
    m_classes[FileOpenWith]->setEnumerates(
        {QStringLiteral("Default"), QStringLiteral("Text"), QStringLiteral("Binary")});
    m_classes[ProjectType]->setEnumerates({QStringLiteral("Executable"), QStringLiteral("Library"),
                                           QStringLiteral("Object file"), QStringLiteral("Staging"),
                                           QStringLiteral("Combining"),
                                           QStringLiteral("Externally Built Executable")});
}

PropertyClass* ProjectProperties::find(const QString& saveName) const
{
    for (const auto& each : m_classes)
        if (each->saveName() == saveName)
            return each.get();
    return nullptr;
}

ProjectProperties::Id ProjectProperties::idOf(const PropertyClass* propertyClass) const
{
    int id = 0;
    while (id < Count && m_classes[size_t(id)].get() != propertyClass)
        ++id;
    return Id(id);
}
