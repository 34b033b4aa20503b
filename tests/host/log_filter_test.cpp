// What a log leaves out and counts, and how a host's log stands up to what it is written to.

#include "tnv5/host/club/log_filter.h"

#include "support/text_printers.h"
#include "tnv5/host/club/club_log.h"
#include "tnv5/testing/manual_clock.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

constexpr qint64 kStart = 1'000'000;

QStringList textsOf(const QList<TLogLine>& lines)
{
    QStringList texts;
    for (const TLogLine& line : lines) {
        texts << line.text;
    }
    return texts;
}

struct TLogFilterTest : ::testing::Test
{
    QStringList take(qint64 ms, const QString& text, TLevel level = TLevel::Warning,
                     const QString& source = QStringLiteral("entrance"))
    {
        return textsOf(filter.take({kStart + ms, level, source, text}));
    }

    TLogFilter filter;
};

TEST_F(TLogFilterTest, ATroubleIsToldOnceAndThenCounted)
{
    EXPECT_EQ(take(0, QStringLiteral("a")), QStringList("a"));
    for (int i = 0; i < 12'345; ++i) {
        EXPECT_EQ(take(1 + i, QStringLiteral("a")), QStringList());
    }
    EXPECT_EQ(textsOf(filter.due(kStart + 59'999)), QStringList());
    EXPECT_EQ(textsOf(filter.due(kStart + 60'000)),
              QStringList(QStringLiteral("a … 12,345 times more in 60 s")));
    EXPECT_EQ(textsOf(filter.due(kStart + 120'000)), QStringList()) << "told once";
    EXPECT_EQ(take(130'000, QStringLiteral("a")), QStringList("a")) << "and then it is new";
}

TEST_F(TLogFilterTest, TheNextLineEndsAMinuteToo)
{
    take(0, QStringLiteral("a"));
    take(1, QStringLiteral("a"));
    EXPECT_EQ(take(70'000, QStringLiteral("b")),
              QStringList({QStringLiteral("a … 1 times more in 60 s"), QStringLiteral("b")}));
}

TEST_F(TLogFilterTest, DifferentTroublesAreBounded)
{
    int written = 0;
    for (int i = 0; i < 1'000; ++i) {
        written += int(take(i, QStringLiteral("no device %1").arg(i)).size());
    }
    EXPECT_EQ(written, TLogFilter::kMaxTroubles);
    EXPECT_EQ(textsOf(filter.rest(kStart + 5'000)),
              QStringList(QStringLiteral("others, such as: no device 999 … 980 times more in 5 s")));
    EXPECT_EQ(textsOf(filter.rest(kStart + 5'000)), QStringList());
}

TEST_F(TLogFilterTest, SourcesAndLevelsAreApart)
{
    EXPECT_EQ(take(0, QStringLiteral("a")).size(), 1);
    EXPECT_EQ(take(0, QStringLiteral("a"), TLevel::Error).size(), 1);
    EXPECT_EQ(take(0, QStringLiteral("a"), TLevel::Warning, QStringLiteral("hall")).size(), 1);
    EXPECT_EQ(take(0, QStringLiteral("a")).size(), 0);
}

TEST_F(TLogFilterTest, InformationIsNeverPutTogetherButBounded)
{
    int written = 0;
    for (int i = 0; i < 2 * TLogFilter::kMaxNews; ++i) {
        written += int(take(i, QStringLiteral("Anna passed"), TLevel::Info).size());
    }
    EXPECT_EQ(written, TLogFilter::kMaxNews);
    EXPECT_EQ(textsOf(filter.due(kStart + 60'000)),
              QStringList(QStringLiteral("others, such as: Anna passed … 300 times more in 60 s")));
}

TEST_F(TLogFilterTest, SourcesThatNoiseInventsAreBounded)
{
    qsizetype written = 0;
    for (int i = 0; i < 10'000; ++i) {
        written += take(i, QStringLiteral("x%1").arg(i), TLevel::Warning, QString::number(i)).size();
    }
    EXPECT_LE(written, TLogFilter::kMaxSources + TLogFilter::kMaxTroubles);
}

TEST_F(TLogFilterTest, AClockThatIsSetBackEndsTheMinute)
{
    take(0, QStringLiteral("a"));
    EXPECT_EQ(take(-500'000, QStringLiteral("a")), QStringList("a"));
}

struct TClubLogTest : ::testing::Test
{
    QStringList lines()
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    testkit::TManualClock clock;
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("club.log"));
};

TEST_F(TClubLogTest, EveryLineHasDateTimeZoneLevelAndSource)
{
    TClubLog log(path);
    QList<TLogLine> heard;
    log.OnLine = [&](const TLogLine& line) { heard << line; };
    log.info({}, QStringLiteral("started"));
    log.warning(QStringLiteral("entrance"), QStringLiteral("odd\x1b[0m\nline"));
    log.error(QStringLiteral("entrance"), QStringLiteral("gone"));
    log.flush();
    const QStringList written = lines();
    ASSERT_EQ(written.size(), 3);
    static const QRegularExpression kStamp(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}(Z|[+-]\\d\\d:\\d\\d) "));
    for (const QString& line : written) {
        EXPECT_TRUE(kStamp.match(line).hasMatch()) << qUtf8Printable(line);
    }
    EXPECT_TRUE(written[0].endsWith(QStringLiteral(" info started")));
    EXPECT_TRUE(written[1].endsWith(QStringLiteral(" warning entrance: odd\\x1b[0m\\x0aline")));
    EXPECT_TRUE(written[2].endsWith(QStringLiteral(" error entrance: gone")));
    EXPECT_EQ(heard.size(), 3);
}

TEST_F(TClubLogTest, ALineThatIsCutShowsIt)
{
    const QString text(1'999, u'x');
    EXPECT_TRUE(logText({0, TLevel::Info, {}, text + u'y'}).endsWith(u"xy"));
    EXPECT_TRUE(logText({0, TLevel::Info, {}, text + QStringLiteral("yz")}).endsWith(QStringLiteral("xy…")));
    EXPECT_TRUE(
        logText({0, TLevel::Info, {}, text + QStringLiteral("\x1b")}).endsWith(QStringLiteral("x\\…")));
}

TEST_F(TClubLogTest, WhatIsAlwaysToldIsNeverTooMuch)
{
    TClubLog log(path);
    for (int i = 0; i < 25'000; ++i) {
        log.always(QString::number(i));
    }
    log.flush();
    EXPECT_EQ(lines().size(), 25'000);
    EXPECT_EQ(log.lost(), 0);
}

TEST_F(TClubLogTest, AFileThatIsRenamedIsOpenedAnew)
{
    TClubLog log(path);
    log.info({}, QStringLiteral("before"));
    log.flush();
    ASSERT_TRUE(QFile::rename(path, path + QStringLiteral(".1")));
    log.info({}, QStringLiteral("to the old one"));
    log.flush();
    log.reopen();
    log.info({}, QStringLiteral("after"));
    log.flush();
    ASSERT_EQ(lines().size(), 1);
    EXPECT_TRUE(lines()[0].endsWith(QStringLiteral("after")));
}

TEST_F(TClubLogTest, AFullDiskIsToldAndWhatIsMissingIsCounted)
{
    TClubLog log(QStringLiteral("/dev/full"));
    for (int i = 0; i < 3; ++i) {
        log.error({}, QString::number(i));
        log.flush();
    }
    EXPECT_EQ(log.lost(), 3);
    EXPECT_FALSE(log.trouble().isEmpty());
    log.reopen(path);
    log.error({}, QStringLiteral("again"));
    log.flush();
    EXPECT_EQ(log.trouble(), QString());
    const QStringList written = lines();
    ASSERT_EQ(written.size(), 2);
    EXPECT_TRUE(written[0].endsWith(QStringLiteral(" warning 3 lines are missing here")));
    EXPECT_TRUE(written[1].endsWith(QStringLiteral(" error again")));
}

TEST_F(TClubLogTest, AFolderThatIsNotThere)
{
    TClubLog log(folder.filePath(QStringLiteral("no/such/folder.log")));
    log.error({}, QStringLiteral("a"));
    log.flush();
    EXPECT_EQ(log.lost(), 1);
    EXPECT_FALSE(log.trouble().isEmpty());
}

} // namespace
} // namespace tnv5::host
