#include "expression/Lexer.h"
#include "expression/CStyleLexer.h"
#include "expression/limits.h"
#include "support/Failure.h"

#include <gtest/gtest.h>

namespace {

// The tokens of a text: "id:text" each.
std::string tokens(const QString& text)
{
    static CStyleLexer lexer;
    std::string found;
    for (lexer.reset(text); lexer.token() != Lexer::End; lexer.gettok())
        found += (found.empty() ? "" : " ") + std::to_string(lexer.token()) + ":" +
                 lexer.text().toString().toStdString();
    return found;
}

} // namespace

TEST(Lexer, LongestOperatorsComeFirst)
{
    EXPECT_EQ(tokens("a<<=b<<c<=d<e"), "7:a 51:<<= 7:b 29:<< 7:c 33:<= 7:d 32:< 7:e");
    EXPECT_EQ(tokens(">>>=>>>>>=>>>=>"), "52:>>>= 31:>>> 50:>>= 52:>>>= 34:>") << "first row that matches";
    EXPECT_EQ(tokens("a+++b---c->d-=e"), "7:a 20:++ 27:+ 7:b 21:-- 28:- 7:c 19:-> 7:d 46:-= 7:e");
    EXPECT_EQ(tokens("!=!~^=^&=&&&|=|||"), "37:!= 23:! 22:~ 54:^= 39:^ 53:&= 41:&& 38:& 55:|= 42:|| 40:|");
    EXPECT_EQ(tokens("a::b:c?d,e;{}[]()"),
              "7:a 11::: 7:b 10:: 7:c 43:? 7:d 56:, 7:e 9:; 16:{ 17:} 14:[ 15:] 12:( 13:)");
    EXPECT_EQ(tokens("*=*/=/%=%+=+==="), "47:*= 24:* 48:/= 25:/ 49:%= 26:% 45:+= 45:+= 36:==");
}

TEST(Lexer, NumbersNamesAndTexts)
{
    EXPECT_EQ(tokens("0x1Fg 0x 017 1.5 1. .5 2.x"),
              "4:0x1F 7:g 4:0x 3:017 5:1.5 3:1 18:. 18:. 3:5 3:2 18:. 7:x");
    EXPECT_EQ(tokens("0X1F"), "3:0 7:X1F") << "patterns know their case";
    EXPECT_EQ(tokens("$a _b9 @A @ @x$"), "7:$a 7:_b9 8:@A 8:@ 8:@x 7:$");
    EXPECT_EQ(tokens("\"a b\" \"\" \"\xc3\xa4\\\""), "6:\"a b\" 6:\"\" 6:\"\xc3\xa4\\\"");
    EXPECT_EQ(tokens(" \t\r\n\v\f1 "), "3:1");
    EXPECT_EQ(tokens(""), "");

    CStyleLexer lexer;
    lexer.reset("9223372036854775807 0xFFFFFFFF 0x 2.5 \"t\" 9223372036854775808 0x100000000");
    EXPECT_EQ(lexer.intTok(), INT64_MAX);
    lexer.gettok();
    EXPECT_EQ(lexer.hexTok(), 0xFFFFFFFFu);
    lexer.gettok();
    EXPECT_EQ(lexer.hexTok(), 0u);
    lexer.gettok();
    EXPECT_EQ(lexer.doubleTok(), 2.5);
    lexer.gettok();
    EXPECT_EQ(lexer.strTok(), "t");
    lexer.gettok();
    EXPECT_EQ(failureOf([&] { lexer.intTok(); }), "number out of range: 9223372036854775808");
    lexer.gettok();
    EXPECT_EQ(failureOf([&] { lexer.hexTok(); }), "number out of range: 0x100000000");
}

TEST(Lexer, WhatIsNoTokenIsToldWithTheRest)
{
    EXPECT_EQ(failureOf([] { tokens("a + #b c"); }), "unrecognised token: #b c");
    EXPECT_EQ(failureOf([] { tokens("\"open"); }), "unrecognised token: \"open");
    EXPECT_EQ(failureOf([] { tokens(QString(QChar(0xE4)) + u'1'); }), "unrecognised token: \xc3\xa4"
                                                                      "1");
    EXPECT_EQ(failureOf([] { tokens(QString(EXPRESSION_MAXIMUM_LENGTH + 1, u'1')); }),
              "expression is too long");
}
