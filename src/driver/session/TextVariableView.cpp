#include "driver/session/TextVariableView.h"

#include "expression/ExpressionType.h"

namespace {

// What a program holds does not get at the terminal: other control characters than these are told by number.
bool isPrinted(QChar c)
{
    return c == u'\n' || c == u'\t' || c.category() != QChar::Other_Control;
}

} // namespace

TextVariableView::TextVariableView(int radix, unsigned arrayLimit, bool showType, bool showName,
                                   bool showValue, bool followStrings, const QByteArray& floatFormat,
                                   bool expand, bool aggregateValue, bool multiLine)
    : m_radix(radix), m_arrayLimit(arrayLimit), m_showType(showType), m_showName(showName),
      m_showValue(showValue), m_followStrings(followStrings), m_floatFormat(floatFormat), m_expand(expand),
      m_aggregateValue(aggregateValue), m_multiLine(multiLine)
{
}

VariableListBuilder::pointerEvalMode
TextVariableView::getPointerEvalMode(const QString&, const QString& typeName, uint64_t address, unsigned&)
{
    bool text = typeName == QLatin1String("char") || typeName == QLatin1String("const char");
    return m_followStrings && text && address != 0 ? PointerString : PointerValue;
}

VariableListBuilder::arrayEvalMode TextVariableView::getArrayEvalMode(const QString&, const QString&,
                                                                      unsigned& count)
{
    m_cut = count > m_arrayLimit;
    if (m_cut)
        count = m_arrayLimit;
    return ArrayElements;
}

QString TextVariableView::valueText(const ExpressionType& value, int radix, const QByteArray& floatFormat)
{
    bool isUnsigned = radix == UnsignedRadix;
    QString text = value.toStr(isUnsigned ? 10 : radix, isUnsigned, radix == CharacterRadix,
                               floatFormat.isEmpty() ? nullptr : floatFormat.constData());
    for (qsizetype at = 0; at < text.size(); ++at)
        if (!isPrinted(text[at]))
            text.replace(at, 1, QStringLiteral("\\u%1").arg(text[at].unicode(), 4, 16, QLatin1Char('0')));
    return text;
}

// The separator, and the item up to its value.
void TextVariableView::beginItem(const QString& name, const QString& typeName)
{
    bool first = m_open.empty() ? m_text.isEmpty() : m_open.back().first;
    if (!first)
        m_text += m_open.empty() && m_multiLine ? QStringLiteral("\n") : QStringLiteral(", ");
    if (!m_open.empty())
        m_open.back().first = false;
    if (m_showType)
        m_text += typeName + u' ';
    if (m_showName) {
        m_text += name;
        if (m_showValue)
            m_text += u'=';
    }
}

void TextVariableView::addPrimitive(const QString& name, const QString&, const ExpressionType& value,
                                    const QString& typeName, const MyMarker*)
{
    if (hidden())
        return;
    beginItem(name, typeName);
    if (m_showValue)
        m_text += valueText(value, m_radix, m_floatFormat);
}

VariableListBuilder::Token TextVariableView::begin(const QString& name, const ExpressionType& value,
                                                   const QString& typeName, bool array)
{
    if (!hidden()) {
        beginItem(name, typeName);
        if (m_aggregateValue)
            m_text += value.toStr(16, false, false, nullptr);
        m_text += array ? u'[' : u'{';
        if (!m_expand)
            m_text += array ? QStringLiteral("...]") : QStringLiteral("...}");
    }
    m_open.push_back({array && m_cut, m_showName, true});
    m_cut = false;
    m_showName = !array;
    return Token(m_open.size());
}

void TextVariableView::end(char16_t bracket)
{
    Aggregate closed = m_open.back();
    m_open.pop_back();
    m_showName = closed.showName;
    if (!m_expand)
        return;
    if (closed.cut)
        m_text += QLatin1String(",...");
    m_text += QChar(bracket);
}

VariableListBuilder::Token TextVariableView::beginObject(const QString& name, const QString&,
                                                         const ExpressionType& value, const QString& typeName,
                                                         const MyMarker*)
{
    return begin(name, value, typeName, false);
}

void TextVariableView::endObject(Token)
{
    end(u'}');
}

VariableListBuilder::Token TextVariableView::beginArray(const QString& name, const QString&,
                                                        const ExpressionType& value, const QString& typeName,
                                                        const MyMarker*)
{
    return begin(name, value, typeName, true);
}

void TextVariableView::endArray(Token)
{
    end(u']');
}

void TextVariableView::clear()
{
    m_text.clear();
    m_open.clear();
    m_cut = false;
}
