#include "expression/BaseType.h"

#include "expression/Expression.h"

QString SimpleType::dump() const
{
    static constexpr const char* Names[] = {"char", "short", "int", "long", "long long", "float", "double"};
    return QLatin1String(m_unsigned ? "unsigned " : "") + QLatin1String(Names[m_kind]);
}

ArrayType::ArrayType(const BaseType* element, const Expression* size)
    : BaseType(element->cost() + size->cost()), m_element(element), m_size(size)
{
}

QString ArrayType::dump() const
{
    return m_element->dump() + u'[' + m_size->dump() + u']';
}

QString StructType::dump() const
{
    QString text = QStringLiteral("struct {");
    for (const Field& field : m_fields) {
        text += u' ' + field.type->dump() + u' ' + field.name;
        if (field.bitSize >= 0)
            text += u':' + QString::number(field.bitSize);
        text += u';';
    }
    return text + QLatin1String(" }");
}

QString RegisterType::dump() const
{
    QString text = QStringLiteral("register ") + QString::number(m_size);
    for (const Field& field : m_fields)
        text += QStringLiteral(" %1 %2 %3").arg(field.name).arg(field.bitOffset).arg(field.bitSize);
    return text + u';';
}
