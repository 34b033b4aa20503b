#include "tnv5/platform/code_page.h"

#include "support/text_printers.h"
#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5::platform;

class CodePageTest : public testing::Test
{
protected:
    ~CodePageTest() override { setCodePage("windows-1251"); }
};

TEST_F(CodePageTest, IsWindows1251UnlessSet)
{
    EXPECT_EQ(codePage(), "windows-1251");
    EXPECT_EQ(fromWire("\xcf\xee\xf0\xf2 \xb9 1"), QStringLiteral("Порт № 1"));
    EXPECT_EQ(toWire(u"Порт № 1"), QByteArray("\xcf\xee\xf0\xf2 \xb9 1"));
    EXPECT_EQ(toWire(u"ЁёЇїҐґ€"), QByteArray("\xa8\xb8\xaf\xbf\xa5\xb4\x88"));
}

TEST_F(CodePageTest, EveryByteSurvivesTheRoundTrip)
{
    for (const char* name : {"windows-1251", "windows-1252", "KOI8-R", "ISO-8859-1"}) {
        setCodePage(name);
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray one(1, static_cast<char>(byte));
            const QString text = fromWire(one);
            ASSERT_EQ(text.size(), 1) << name << byte;
            EXPECT_EQ(toWire(text), one) << name << byte;
            EXPECT_EQ(wireByte(text.front()), static_cast<uchar>(byte)) << name << byte;
        }
    }
}

TEST_F(CodePageTest, AForeignCharacterBecomesAQuestionMark)
{
    EXPECT_EQ(toWire(u"a中ö"), QByteArray("a??"));
    EXPECT_EQ(wireByte(QChar(0x4e2d)), '?');
}

TEST_F(CodePageTest, TheHostMaySetAnother)
{
    setCodePage("windows-1252");
    EXPECT_EQ(codePage(), "windows-1252");
    EXPECT_EQ(fromWire("\xf6"), QStringLiteral("ö"));
    EXPECT_EQ(toWire(u"öП"), QByteArray("\xf6?"));
}

TEST_F(CodePageTest, TheBuiltInTableIsTheSystems)
{
    setCodePage("CP1251");
    const QString builtIn = fromWire("\x80\x98\xa0\xc0\xff");
    EXPECT_EQ(builtIn, QString::fromUtf16(u"\u0402\u0098\u00a0\u0410\u044f"));
}

TEST_F(CodePageTest, AnUnknownOrWiderCodePageIsRefusedAndTheOldOneStays)
{
    EXPECT_THROW(setCodePage("no-such-page"), EConvertError);
    EXPECT_THROW(setCodePage("UTF-16"), EConvertError);
    EXPECT_THROW(setCodePage("UTF-8"), EConvertError);
    EXPECT_EQ(codePage(), "windows-1251");
    EXPECT_EQ(toWire(u"Ж"), QByteArray("\xc6"));
}

} // namespace
