#include "driver/dap/HitCondition.h"

#include "driver/dap/RequestFailure.h"

HitCondition::HitCondition(const QString& text)
{
    static constexpr struct {
        const char* sign;
        Relation relation;
    } Signs[] = {{"==", Equal}, {">=", GreaterOrEqual}, {"<=", LessOrEqual}, {"=", Equal}, {">", Greater},
                 {"<", Less},   {"%", Multiple},        {"", Equal}};
    QString rest = text.trimmed();
    if (rest.isEmpty())
        return;
    for (const auto& [sign, relation] : Signs)
        if (rest.startsWith(QLatin1String(sign))) {
            m_relation = relation;
            rest = rest.mid(QLatin1String(sign).size()).trimmed();
            break;
        }
    bool good = false;
    m_number = rest.toULongLong(&good);
    if (!good || rest.startsWith(QLatin1Char('+')) || (m_relation == Multiple && m_number == 0))
        throw RequestFailure(QStringLiteral("invalid hit condition \"%1\"").arg(text));
}

bool HitCondition::holds(uint64_t hit) const
{
    switch (m_relation) {
    case Equal: return hit == m_number;
    case Less: return hit < m_number;
    case LessOrEqual: return hit <= m_number;
    case Greater: return hit > m_number;
    case GreaterOrEqual: return hit >= m_number;
    case Multiple: return hit % m_number == 0;
    case Always: break;
    }
    return true;
}
