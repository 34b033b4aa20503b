#include "tnv5/coffee/qr_text.h"

#include "support/text_printers.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using coffee::_qrcodestr;
using testkit::TManualClock;

const QString kKey = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c");

QByteArray plainText()
{
    return _qrcodestr(1, 2, 3, 250, 1, kKey);
}

/// The rows of the table that make_vectors.py makes.
QList<QByteArrayList> vectors()
{
    QFile file(QStringLiteral(TNV5_COFFEE_VECTORS));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << TNV5_COFFEE_VECTORS;
    QList<QByteArrayList> rows;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (!line.isEmpty() && !line.startsWith('#')) {
            rows << line.split('\t');
        }
    }
    return rows;
}

TEST(QrText, AsComputedByOthers)
{
    const QList<QByteArrayList> rows = vectors();
    EXPECT_GE(rows.size(), 60);
    TManualClock clock;
    for (const QByteArrayList& row : rows) {
        ASSERT_EQ(row.size(), 10) << row[0].toStdString();
        const auto number = [&](int column) { return row[column].toInt(); };
        clock.jumpTo(row[6].toLongLong());
        EXPECT_EQ(
            _qrcodestr(number(1), number(2), number(3), number(4), number(5), QString::fromLatin1(row[7])),
            row[9])
            << row[0].toStdString();
    }
}

TEST(QrText, IsMadeOfTheBlockThatOthersComputed)
{
    TManualClock clock;
    for (const QByteArrayList& row : vectors()) {
        const auto number = [&](int column) { return row[column].toInt(); };
        clock.jumpTo(row[6].toLongLong());
        const coffee::TBlock block = coffee::QrBlock(number(1), number(2), number(3), number(4), number(5),
                                                     coffee::UnixStamp(platform::Now()));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(block.data()), 16).toHex().toUpper(), row[8])
            << row[0].toStdString();
    }
}

TEST(QrText, Is34CharactersFromOToS)
{
    static const QRegularExpression form(QStringLiteral("\\AO[0-9A-F]{32}S\\z"));
    TManualClock clock;
    for (int i = 0; i < 500; ++i) {
        clock.advance(1'000);
        const QByteArray text = _qrcodestr(i, i, i, i, i, kKey);
        EXPECT_EQ(text.size(), 34);
        EXPECT_TRUE(form.match(QString::fromLatin1(text)).hasMatch()) << text.toStdString();
    }
}

TEST(QrText, IsTheSameWithinARoundedSecond)
{
    TManualClock clock(TManualClock::at(11, 59, 59, 501));
    const QByteArray first = plainText();
    clock.advance(998); // 12:00:00.499
    EXPECT_EQ(plainText(), first);
    clock.advance(2); // 12:00:00.501
    EXPECT_NE(plainText(), first);
}

TEST(QrText, OneSecondLaterEveryByteIsAnother)
{
    TManualClock clock;
    const QByteArray first = plainText();
    EXPECT_EQ(plainText(), first);
    clock.advance(1'000);
    const QByteArray second = plainText();
    for (int byte = 0; byte < 16; ++byte) {
        EXPECT_NE(second.mid(1 + 2 * byte, 2), first.mid(1 + 2 * byte, 2)) << byte;
    }
}

TEST(QrText, FollowsTheInstalledClock)
{
    TManualClock clock;
    EXPECT_EQ(plainText(), "O45931B4A9A54D107AFCD2FC67ED244D9S");
    clock.jumpTo(TManualClock::at(12, 0, 1));
    EXPECT_EQ(plainText(), "O6EC068D3B29978CD49E18581E2B2E8B5S");
}

TEST(QrText, EveryNumberHasItsPlace)
{
    const TManualClock clock;
    const QByteArray text = _qrcodestr(1, 2, 3, 4, 5, kKey);
    EXPECT_NE(_qrcodestr(2, 1, 3, 4, 5, kKey), text);
    EXPECT_NE(_qrcodestr(1, 3, 2, 4, 5, kKey), text);
    EXPECT_NE(_qrcodestr(1, 2, 4, 3, 5, kKey), text);
    EXPECT_NE(_qrcodestr(1, 2, 3, 5, 4, kKey), text);
}

TEST(QrText, AKeyThatIsNoneRaisesAndTheNextCallWorks)
{
    const TManualClock clock;
    const QByteArray text = plainText();
    for (const QString& bad : {QStringLiteral("no key"), kKey + u' ', kKey + QStringLiteral("0g"),
                               u' ' + kKey, QStringLiteral("0x") + kKey, QStringLiteral("-1")}) {
        EXPECT_THROW(_qrcodestr(1, 2, 3, 250, 1, bad), platform::EConvertError) << bad.toStdString();
        EXPECT_EQ(plainText(), text);
    }
}

TEST(QrText, TheLastKeyIsNotKept)
{
    const TManualClock clock;
    const QByteArray withZeros = _qrcodestr(1, 2, 3, 250, 1, QString(32, u'0'));
    plainText();
    EXPECT_EQ(_qrcodestr(1, 2, 3, 250, 1, QString()), withZeros);
    EXPECT_EQ(_qrcodestr(1, 2, 3, 250, 1, QStringLiteral("00")), withZeros);
}

} // namespace
