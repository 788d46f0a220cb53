#include "script/engine/ESTokens.h"

#include <QHash>

namespace {

#define ES_TEXT(name, text) text,
constexpr const char* TextTable[] = {ES_SYMBOL_TOKENS(ES_TEXT) ES_WORD_TOKENS(ES_TEXT)
                                         ES_NODE_KINDS(ES_TEXT)};
#undef ES_TEXT

QHash<QString, int> makeKeywords()
{
    QHash<QString, int> words;
#define ES_WORD(name, text) words.insert(QStringLiteral(text), ESToken::name);
    ES_WORD_TOKENS(ES_WORD)
#undef ES_WORD
    return words;
}

} // namespace

QString ESToken::text(int token)
{
    if (token >= 0 && token < 128)
        return QString(QChar(token));
    if (token > BeforeFirst && token < Last)
        return QString::fromLatin1(TextTable[token - BeforeFirst - 1]);
    return QStringLiteral("token<%1>").arg(token);
}

int ESToken::word(const QString& name)
{
    static const QHash<QString, int> keywords = makeKeywords();
    return keywords.value(name, Identifier);
}
