#include "tnv5/coffee/qr_key.h"

#include "support/text_printers.h"
#include "tnv5/platform/errors.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using coffee::QrKey;

QByteArray bytesOf(QStringView keyHex)
{
    const coffee::TKey key = QrKey(keyHex);
    return QByteArray(reinterpret_cast<const char*>(key.data()), qsizetype(key.size())).toHex();
}

TEST(QrKey, IsTwoDigitsAByte)
{
    EXPECT_EQ(bytesOf(u"2b7e151628aed2a6abf7158809cf4f3c"), "2b7e151628aed2a6abf7158809cf4f3c");
    EXPECT_EQ(bytesOf(u"000102030405060708090a0b0c0d0e0f"), "000102030405060708090a0b0c0d0e0f");
}

TEST(QrKey, TakesDigitsInEitherCase)
{
    EXPECT_EQ(bytesOf(u"ABCDEFabcdef0123456789AaBbCcDdEe"), "abcdefabcdef0123456789aabbccddee");
}

TEST(QrKey, OfALongOneTheFirst16BytesCount)
{
    EXPECT_EQ(bytesOf(u"2b7e151628aed2a6abf7158809cf4f3cFF"), "2b7e151628aed2a6abf7158809cf4f3c");
    EXPECT_EQ(bytesOf(u"2b7e151628aed2a6abf7158809cf4f3cF"), "2b7e151628aed2a6abf7158809cf4f3c");
    EXPECT_EQ(bytesOf(QString(100'000, u'1')), QByteArray(32, '1'));
}

TEST(QrKey, AShortOneIsFilledUpWithZeros)
{
    EXPECT_EQ(bytesOf(u""), QByteArray(32, '0'));
    EXPECT_EQ(bytesOf(u"ff"), "ff" + QByteArray(30, '0'));
    EXPECT_EQ(bytesOf(u"2b7e151628aed2a6abf7158809cf4f"), "2b7e151628aed2a6abf7158809cf4f00");
}

TEST(QrKey, ASingleDigitAtTheEndIsAByte)
{
    EXPECT_EQ(bytesOf(u"a"), "0a" + QByteArray(30, '0'));
    EXPECT_EQ(bytesOf(u"12345"), "123405" + QByteArray(26, '0'));
    EXPECT_EQ(bytesOf(u"2b7e151628aed2a6abf7158809cf4f3"), "2b7e151628aed2a6abf7158809cf4f03");
}

TEST(QrKey, IsNeverReadPastItsEnd)
{
    const QString longer = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c");
    EXPECT_EQ(bytesOf(QStringView(longer).first(3)), "2b07" + QByteArray(28, '0'));
}

TEST(QrKey, AnythingElseIsRefusedWhereverItStands)
{
    const QString good = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c2b7e");
    const QString bad =
        QStringLiteral("gGzZ/:@` \t\n-+$#xX.,_\u00e0\u0430\uff11\u0661\U00010430") + QChar(u'\0');
    for (const QChar character : bad) {
        for (qsizetype at = 0; at < good.size(); ++at) {
            QString text = good;
            text[at] = character;
            EXPECT_THROW(QrKey(text), platform::EConvertError) << text.toStdString() << " at " << at;
        }
        EXPECT_THROW(QrKey(good + character), platform::EConvertError);
        EXPECT_THROW(QrKey(QString(character)), platform::EConvertError);
    }
}

TEST(QrKey, BlanksSignsAndPrefixesAreNotHexadecimal)
{
    for (const char* text :
         {" 1", "1 ", "+1", "-1", "$1", "0x", "0X", "0x2b", "2b 7e", "#f", "1h", " ", "\n"}) {
        EXPECT_THROW(QrKey(QString::fromLatin1(text)), platform::EConvertError) << text;
    }
}

TEST(QrKey, TheMessageDoesNotShowTheKey)
{
    try {
        QrKey(u"2b7e1516zz");
        FAIL();
    } catch (const platform::EConvertError& error) {
        EXPECT_EQ(error.message(), QStringLiteral("The key is not hexadecimal"));
    }
}

} // namespace
