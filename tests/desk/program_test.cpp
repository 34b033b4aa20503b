#include "integration/program_run.h"
#include "tnv5/host/local/local_client.h"
#include "tnv5/host/local/local_server.h"

#include <QFile>
#include <QImage>
#include <gtest/gtest.h>

using namespace tnv5;
using integration::TProgramRun;

namespace {

const QString kDesk = QStringLiteral(TNV5_DESK);

class TQuietClub : public host::IClubControl
{
public:
    QJsonObject state() override { return {{QStringLiteral("club"), QStringLiteral("Quiet")}}; }
    QString open(const QString&, const QString&, const QString&) override { return {}; }
    QString reload() override { return {}; }
    QByteArray picture(const QString&) override { return {}; }
    QJsonArray journal(qint64, int) override { return {}; }
};

class DeskProgram : public ::testing::Test
{
protected:
    DeskProgram() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    QTemporaryDir FFolder;
    const QString FSocket = FFolder.filePath(QStringLiteral("club.socket"));
};

TEST_F(DeskProgram, TakesAPicture)
{
    TQuietClub club;
    const host::TLocalServer server(club, FSocket);
    const QString file = FFolder.filePath(QStringLiteral("desk.png"));
    TProgramRun desk(kDesk, {QStringLiteral("--socket"), FSocket, QStringLiteral("--screenshot"), file,
                             QStringLiteral("--language"), QStringLiteral("uk"), QStringLiteral("--theme"),
                             QStringLiteral("dark")});
    EXPECT_EQ(desk.exitCode(), 0) << desk.complaints().toStdString();
    const QImage picture(file);
    ASSERT_FALSE(picture.isNull());
    EXPECT_GT(picture.width(), 400);
    EXPECT_LT(QColor(picture.pixel(2, picture.height() - 2)).lightness(), 80); // dark
}

TEST_F(DeskProgram, SaysWhatIsWrong)
{
    const QList<QStringList> wrong = {{QStringLiteral("--theme"), QStringLiteral("pink")},
                                      {QStringLiteral("--language"), QStringLiteral("xx")},
                                      {QStringLiteral("--after"), QStringLiteral("soon")},
                                      {QStringLiteral("--gates"), QStringLiteral("/nowhere.ini")},
                                      {QStringLiteral("something")}};
    for (const QStringList& options : wrong) {
        TProgramRun desk(kDesk, QStringList{QStringLiteral("--socket"), FSocket} + options);
        EXPECT_EQ(desk.exitCode(), 2) << options.join(u' ').toStdString();
        EXPECT_TRUE(desk.complaints().contains(QStringLiteral("tnv5-desk: ")))
            << desk.complaints().toStdString();
    }
}

TEST_F(DeskProgram, WithoutAScreenItIsNoWindow)
{
    QMap<const char*, QByteArray> before;
    for (const char* const name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        before[name] = qgetenv(name);
        qunsetenv(name);
    }
    TProgramRun desk(kDesk, {QStringLiteral("--socket"), FSocket});
    EXPECT_EQ(desk.exitCode(), 1);
    EXPECT_TRUE(desk.complaints().endsWith(QStringLiteral("tnv5-desk: there is no screen\n")))
        << desk.complaints().toStdString();
    for (const auto& [name, value] : before.toStdMap()) {
        if (!value.isEmpty()) {
            qputenv(name, value);
        }
    }
}

// Whatever becomes of the desks, the club goes on, and its books are as they must be.
TEST_F(DeskProgram, ClosingItInMidTrafficLosesNothing)
{
    TProgramRun demo(QStringLiteral(TNV5_PROGRAM),
                     {QStringLiteral("demo"), QStringLiteral("--plain"), QStringLiteral("--seconds"),
                      QStringLiteral("6"), QStringLiteral("--desk"), FSocket});
    ASSERT_TRUE(demo.says(QStringLiteral("tnv5-desk --socket")));
    const QString file = FFolder.filePath(QStringLiteral("desk.png"));
    {
        TProgramRun killed(kDesk, {QStringLiteral("--socket"), FSocket});
        TProgramRun closed(kDesk, {QStringLiteral("--socket"), FSocket});
        TProgramRun seeing(kDesk, {QStringLiteral("--socket"), FSocket, QStringLiteral("--screenshot"), file,
                                   QStringLiteral("--after"), QStringLiteral("1")});
        EXPECT_EQ(seeing.exitCode(), 0) << seeing.complaints().toStdString();
        closed.stop();
        closed.exitCode();
    } // the other is killed
    EXPECT_FALSE(QImage(file).isNull());
    const QJsonObject opened = host::askHost(FSocket,
                                             {{QStringLiteral("do"), QStringLiteral("open")},
                                              {QStringLiteral("gate"), QStringLiteral("04D")},
                                              {QStringLiteral("who"), QStringLiteral("Olha")},
                                              {QStringLiteral("reason"), QStringLiteral("pram")}},
                                             60'000);
    const bool busy = opened.value(u"error") == QStringLiteral("somebody is passing at 04D");
    EXPECT_TRUE(opened.value(u"ok").toBool() || busy);
    EXPECT_EQ(demo.exitCode(), 0) << demo.output().toStdString() << demo.complaints().toStdString();
    EXPECT_FALSE(QFile::exists(FSocket));
}

} // namespace
