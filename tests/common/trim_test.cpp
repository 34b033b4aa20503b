#include "tnv5/common/text.h"

#include <QString>
#include <gtest/gtest.h>

namespace {

using tnv5::common::Trim;

TEST(Trim, RemovesEveryCharacterUpTo32AtBothEnds)
{
    for (char16_t blank = 0; blank <= 32; ++blank) {
        const QString text = QString(1, QChar(blank)) + "a b" + QString(2, QChar(blank));
        EXPECT_EQ(Trim(text), u"a b") << int(blank);
    }
    EXPECT_EQ(Trim(u" \t\r\n\v\f 000A \t\r\n"), u"000A");
}

TEST(Trim, LeavesTheMiddle)
{
    EXPECT_EQ(Trim(u" a \t b "), u"a \t b");
    EXPECT_EQ(Trim(u"ab"), u"ab");
}

TEST(Trim, RemovesNothingElse)
{
    for (const char16_t other : {u'!', u'\x7f', u'\u0085', u'\u00a0', u'\u2003', u'\u3000', u'\ufeff'}) {
        const QString text = QString(QChar(other)) + u'a' + QChar(other);
        EXPECT_EQ(Trim(text), text) << int(other);
        EXPECT_EQ(Trim(u' ' + text + u' '), text) << int(other);
    }
}

TEST(Trim, OfBlanksIsEmpty)
{
    EXPECT_TRUE(Trim(u"").isEmpty());
    EXPECT_TRUE(Trim(QStringView()).isEmpty());
    EXPECT_TRUE(Trim(u"   ").isEmpty());
    EXPECT_TRUE(Trim(u"\x01\x1f").isEmpty());
}

} // namespace
