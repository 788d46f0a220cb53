#include "driver/dap/RequestArguments.h"

#include "driver/dap/RequestFailure.h"

#include <cmath>
#include <limits>

namespace {

constexpr double ExactNumbers = 9007199254740992.0; // what a double holds without a gap

} // namespace

QJsonValue RequestArguments::value(const char* name) const
{
    return m_object.value(QLatin1String(name));
}

bool RequestArguments::has(const char* name) const
{
    QJsonValue found = value(name);
    return !found.isUndefined() && !found.isNull();
}

void RequestArguments::refuse(const char* name, const char* why) const
{
    throw RequestFailure(QStringLiteral("argument \"%1%2\" %3")
                             .arg(m_way, QLatin1String(name), QLatin1String(has(name) ? why : "is missing")));
}

QString RequestArguments::text(const char* name) const
{
    if (!value(name).isString())
        refuse(name, "must be a text");
    return value(name).toString();
}

QString RequestArguments::text(const char* name, const QString& otherwise) const
{
    return has(name) ? text(name) : otherwise;
}

int64_t RequestArguments::number(const char* name) const
{
    QJsonValue found = value(name);
    double number = found.toDouble();
    if (!found.isDouble() || number != std::trunc(number) || std::abs(number) > ExactNumbers)
        refuse(name, "must be a whole number");
    return int64_t(number);
}

int64_t RequestArguments::number(const char* name, int64_t otherwise) const
{
    return has(name) ? number(name) : otherwise;
}

int RequestArguments::count(const char* name) const
{
    int64_t found = number(name);
    if (found < 0 || found > std::numeric_limits<int>::max())
        refuse(name, "is out of range");
    return int(found);
}

int RequestArguments::count(const char* name, int otherwise) const
{
    return has(name) ? count(name) : otherwise;
}

bool RequestArguments::flag(const char* name, bool otherwise) const
{
    if (!has(name))
        return otherwise;
    if (!value(name).isBool())
        refuse(name, "must be true or false");
    return value(name).toBool();
}

RequestArguments RequestArguments::object(const char* name) const
{
    if (has(name) && !value(name).isObject())
        refuse(name, "must be an object");
    return RequestArguments(value(name).toObject(), m_way + QLatin1String(name) + QLatin1Char('.'));
}

std::vector<RequestArguments> RequestArguments::objects(const char* name) const
{
    if (has(name) && !value(name).isArray())
        refuse(name, "must be a list");
    std::vector<RequestArguments> list;
    const QJsonArray values = value(name).toArray();
    for (const QJsonValue& entry : values) {
        if (!entry.isObject())
            refuse(name, "must be a list of objects");
        QString way = QStringLiteral("%1%2[%3].").arg(m_way, QLatin1String(name)).arg(list.size());
        list.emplace_back(entry.toObject(), way);
    }
    return list;
}

QStringList RequestArguments::texts(const char* name) const
{
    if (has(name) && !value(name).isArray())
        refuse(name, "must be a list");
    QStringList list;
    const QJsonArray values = value(name).toArray();
    for (const QJsonValue& entry : values) {
        if (!entry.isString())
            refuse(name, "must be a list of texts");
        list.append(entry.toString());
    }
    return list;
}

QStringList RequestArguments::textOrTexts(const char* name) const
{
    return value(name).isString() ? QStringList{text(name)} : texts(name);
}
