// The arguments of a request, or an object inside them, read by name. A null counts as absent. What is
// missing or of another type throws RequestFailure, with the way to it: `argument "source.path" is missing`.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

class RequestArguments {
public:
    explicit RequestArguments(const QJsonObject& object, const QString& way = QString())
        : m_object(object), m_way(way)
    {
    }

    bool has(const char* name) const;
    QString text(const char* name) const;
    QString text(const char* name, const QString& otherwise) const;
    // Whole numbers; `count` and `index` are those from 0 to the largest int.
    int64_t number(const char* name) const;
    int64_t number(const char* name, int64_t otherwise) const;
    int count(const char* name) const;
    int count(const char* name, int otherwise) const;
    bool flag(const char* name, bool otherwise) const;
    // Absent ones are empty.
    RequestArguments object(const char* name) const;
    std::vector<RequestArguments> objects(const char* name) const;
    QStringList texts(const char* name) const;
    // A list of texts, or one text for a list of one.
    QStringList textOrTexts(const char* name) const;

    const QJsonObject& json() const { return m_object; }

private:
    QJsonValue value(const char* name) const;
    [[noreturn]] void refuse(const char* name, const char* why) const;

    QJsonObject m_object;
    QString m_way; // ends with a dot, or is empty
};
