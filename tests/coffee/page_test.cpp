// The worked examples of docs/coffee.md are what comes out.

#include "support/text_printers.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/testing/manual_clock.h"

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;

TEST(CoffeePage, ExamplesAreWhatComesOut)
{
    QFile file(QStringLiteral(TNV5_DOCS "/coffee.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    static const QRegularExpression key(QStringLiteral("example, `([0-9a-f]{32})`"));
    static const QRegularExpression row(
        QStringLiteral("^\\| ([-0-9 ]+) \\| (\\d{4}-.{14}) \\| `(\\w+)` \\| `(\\w+)` \\|$"),
        QRegularExpression::MultilineOption);
    const QString keyHex = key.match(page).captured(1);
    const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC);
    int examples = 0;
    testkit::TManualClock clock;
    for (auto match = row.globalMatch(page); match.hasNext(); ++examples) {
        const QRegularExpressionMatch example = match.next();
        const QStringList n = example.captured(1).split(u' ');
        ASSERT_EQ(n.size(), 5);
        QDateTime time = QDateTime::fromString(example.captured(2), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        time.setTimeSpec(Qt::UTC);
        clock.jumpTo(epoch.msecsTo(time));
        const int numbers[] = {n[0].toInt(), n[1].toInt(), n[2].toInt(), n[3].toInt(), n[4].toInt()};
        const coffee::TBlock block = coffee::QrBlock(numbers[0], numbers[1], numbers[2], numbers[3],
                                                     numbers[4], coffee::UnixStamp(platform::Now()));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(block.data()), 16).toHex().toUpper(),
                  example.captured(3).toLatin1());
        EXPECT_EQ(coffee::_qrcodestr(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], keyHex),
                  example.captured(4).toLatin1());
    }
    EXPECT_EQ(examples, 7);
}

} // namespace
