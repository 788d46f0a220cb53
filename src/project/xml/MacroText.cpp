#include "project/xml/MacroText.h"

#include "project/xml/limits.h"
#include "support/HException.h"

#include <QDateTime>
#include <QLocale>

#include <vector>

namespace {

struct DynamicMacro {
    QLatin1String name;
    QLatin1String format;
};

// The date and time macros stand in the system table under their format, so that listings show them.
constexpr DynamicMacro DynamicMacros[] = {
    {QLatin1String("Date"), QLatin1String("d MMMM yyyy")}, {QLatin1String("DateYear"), QLatin1String("yyyy")},
    {QLatin1String("DateMonth"), QLatin1String("MM")},     {QLatin1String("DateDay"), QLatin1String("dd")},
    {QLatin1String("Time"), QLatin1String("hh:mm:ss")},    {QLatin1String("TimeHour"), QLatin1String("hh")},
    {QLatin1String("TimeMinute"), QLatin1String("mm")},    {QLatin1String("TimeSecond"), QLatin1String("ss")},
};

const DynamicMacro* findDynamicMacro(const QString& name)
{
    for (const DynamicMacro& macro : DynamicMacros)
        if (name == macro.name)
            return &macro;
    return nullptr;
}

// One scan over a text.
class Expansion {
public:
    Expansion(const MacroText::Macros& macros, const QString& text) : m_macros(macros), m_text(text) {}

    // True when a reference held a "$" inside, so that the result wants another scan.
    bool run(QString& result, QString& nested);

private:
    void matchParentheses();
    void append(QString& result, QStringView reference) const;

    const MacroText::Macros& m_macros;
    const QString& m_text;
    std::vector<qsizetype> m_match; // for each "(", the place of its ")", or -1
};

// In one pass for all of them: a text of unclosed references would be quadratic otherwise.
void Expansion::matchParentheses()
{
    m_match.assign(size_t(m_text.size()), -1);
    std::vector<qsizetype> open;
    for (qsizetype i = 0; i < m_text.size(); ++i) {
        if (m_text[i] == u'(') {
            open.push_back(i);
        } else if (m_text[i] == u')' && !open.empty()) {
            m_match[size_t(open.back())] = i;
            open.pop_back();
        }
    }
}

bool Expansion::run(QString& result, QString& nested)
{
    bool again = false;
    matchParentheses();
    qsizetype at = 0;
    for (;;) {
        qsizetype dollar = m_text.indexOf(u"$(", at);
        if (dollar < 0)
            break;
        result.append(QStringView(m_text).mid(at, dollar - at));
        qsizetype close = m_match[size_t(dollar + 1)];
        if (close < 0) {
            at = dollar + 1; // the "$" goes, the scan continues with the "("
            result.append(u'(');
            ++at;
            continue;
        }
        QStringView reference = QStringView(m_text).mid(dollar + 2, close - dollar - 2);
        if (reference.contains(u'$')) {
            again = true;
            nested = reference.toString();
        }
        append(result, reference);
        if (result.size() > qsizetype(XMLLimits::MacroTextLength))
            throw HException(QStringLiteral("macro $(%1) expands to more than %2 characters")
                                 .arg(reference.left(100))
                                 .arg(XMLLimits::MacroTextLength));
        at = close + 1;
    }
    result.append(QStringView(m_text).mid(at));
    return again;
}

void Expansion::append(QString& result, QStringView reference) const
{
    qsizetype colon = reference.indexOf(u':');
    QString name = (colon < 0 ? reference : reference.left(colon)).toString();
    auto found = m_macros.constFind(name);
    const DynamicMacro* dynamic = findDynamicMacro(name);
    // The table's own entry for a date or time macro only announces it.
    if (found != m_macros.constEnd() && !(dynamic && found.value() == dynamic->format)) {
        result.append(found.value());
        return;
    }
    QString value;
    if (dynamic && MacroText::dynamicMacro(name, value))
        result.append(value);
    else if (colon >= 0)
        result.append(reference.mid(colon + 1));
    else
        result.append(u"$(").append(reference).append(u')');
}

} // namespace

MacroText::Macros MacroText::dynamicMacros()
{
    Macros macros;
    for (const DynamicMacro& macro : DynamicMacros)
        macros.insert(macro.name, macro.format);
    return macros;
}

QString MacroText::replaceMacros(const Macros& macros, const QString& text)
{
    QString current = text;
    for (unsigned pass = 0; current.contains(QLatin1String("$(")); ++pass) {
        QString result;
        QString nested;
        bool again = Expansion(macros, current).run(result, nested);
        if (!again || result == current)
            return result;
        if (pass + 1 >= XMLLimits::MacroPasses)
            throw HException(QStringLiteral("macro $(%1) is still not expanded after %2 passes")
                                 .arg(nested.left(100))
                                 .arg(XMLLimits::MacroPasses));
        current = result;
    }
    return current;
}

bool MacroText::dynamicMacro(const QString& name, QString& value)
{
    const DynamicMacro* macro = findDynamicMacro(name);
    if (!macro)
        return false;
    value = QLocale().toString(QDateTime::currentDateTime(), macro->format);
    return true;
}

MacroText::Macros MacroText::macrosFromStringList(const QStringList& list)
{
    Macros macros;
    for (const QString& item : list) {
        qsizetype equals = item.indexOf(u'=');
        macros.insert(equals < 0 ? item : item.left(equals),
                      equals < 0 ? QStringLiteral("") : item.mid(equals + 1));
    }
    return macros;
}

QStringList MacroText::stringListFromMacros(const Macros& macros)
{
    QStringList list;
    for (auto it = macros.constBegin(); it != macros.constEnd(); ++it)
        list.append(it.key().trimmed() + u'=' + it.value());
    return list;
}

void MacroText::overwriteMacros(Macros& base, const Macros& over)
{
    for (auto it = over.constBegin(); it != over.constEnd(); ++it)
        base.insert(it.key(), it.value());
}

QStringList MacroText::stringListFromString(const QString& text, bool keepEmpty)
{
    QStringList list;
    if (text.isEmpty())
        return list;
    QString item;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == u';') {
            if (keepEmpty || !item.isEmpty())
                list.append(item);
            item = QString();
        } else {
            if (text[i] == u'\\' && i + 1 < text.size())
                ++i;
            item.append(text[i]);
        }
    }
    return list;
}

QString MacroText::stringFromStringList(const QStringList& list)
{
    QString text;
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (i > 0)
            text.append(u';');
        text.append(escape(list[i]));
    }
    return text;
}

QString MacroText::escape(const QString& text)
{
    QString escaped;
    for (QChar c : text) {
        if (c == u';' || c == u'\\')
            escaped.append(u'\\');
        escaped.append(c);
    }
    return escaped;
}
