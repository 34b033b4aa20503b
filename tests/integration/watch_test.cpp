// Watching a line, recording it and playing the recording, as a person does it.

#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/tools/recording.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

class TProgramRun
{
public:
    explicit TProgramRun(const QStringList& arguments)
    {
        FProgram.setProcessChannelMode(QProcess::MergedChannels);
        FProgram.start(QStringLiteral(TNV5_PROGRAM), arguments);
    }
    ~TProgramRun()
    {
        FProgram.kill();
        FProgram.waitForFinished();
    }

    bool says(const QString& text)
    {
        return eventually([&] { return output().contains(text); });
    }

    int exitCode()
    {
        return eventually([&] { return FProgram.state() == QProcess::NotRunning; }) ? FProgram.exitCode()
                                                                                    : -1;
    }

    void stop() { FProgram.terminate(); }

    QString output()
    {
        FOutput += QString::fromUtf8(FProgram.readAll());
        return FOutput;
    }

private:
    QProcess FProgram;
    QString FOutput;
};

class Watch : public ::testing::Test
{
protected:
    QString file(const char* name, const QByteArray& content = {})
    {
        const QString path = directory.filePath(QString::fromLatin1(name));
        if (!content.isEmpty()) {
            QFile written(path);
            EXPECT_TRUE(written.open(QIODevice::WriteOnly));
            written.write(content);
        }
        return path;
    }

    QTemporaryDir directory;
};

const QByteArray kCardRecording = QByteArrayLiteral("# tnv5 recording 1\n"
                                                    "+0.000000 < $01AR12345678\\r\n"
                                                    "+0.100000 < #01ARelay 1\\r\n"
                                                    "+0.700000 < $01AG\\r\n");

TEST_F(Watch, ShowsAndRecordsABusAndTheRecordingPlays)
{
    sim::TPty pty(QStringLiteral("boards"));
    sim::TBoardBus bus(pty);
    bus.addPair(QStringLiteral("000"), 20);
    const QString recording = file("bus.rec");
    TProgramRun watch({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("bus"),
                       QStringLiteral("--record"), recording});
    ASSERT_TRUE(watch.says(QStringLiteral("Listening to")));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    bus.ping(QStringLiteral("000A"));
    bus.readCard(QStringLiteral("000B"), QStringLiteral("123"));
    EXPECT_TRUE(watch.says(QStringLiteral("board 000A pings")));
    EXPECT_TRUE(watch.says(QStringLiteral("card 123 read at board 000B")));
    EXPECT_TRUE(watch.output().contains(QStringLiteral("< right $000APING26\\r")));
    watch.stop();
    EXPECT_EQ(watch.exitCode(), 0);

    const auto entries = tools::readRecording(recording);
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].Bytes, "$000APING26\r");

    TProgramRun replay({QStringLiteral("replay"), recording, QStringLiteral("--as"), QStringLiteral("bus"),
                        QStringLiteral("--speed"), QStringLiteral("0")});
    EXPECT_EQ(replay.exitCode(), 0);
    EXPECT_TRUE(replay.output().contains(QStringLiteral("sends   $000AECHOB6")));
    EXPECT_TRUE(replay.output().contains(QStringLiteral("routes  #0.0.0.0:000APING22")));
}

TEST_F(Watch, AnUnpluggedPortEndsIt)
{
    sim::TPty pty(QStringLiteral("boards"));
    TProgramRun watch(
        {QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("turnstile")});
    ASSERT_TRUE(watch.says(QStringLiteral("Listening to")));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    pty.unplug();
    EXPECT_EQ(watch.exitCode(), 1);
    EXPECT_TRUE(watch.output().contains(QStringLiteral("went away")));
}

TEST_F(Watch, RecordingOfATurnstilePlaysIntoTheComponent)
{
    const QString recording = file("gate.rec", kCardRecording);
    for (const char* speed : {"0", "50"}) {
        TProgramRun replay({QStringLiteral("replay"), recording, QStringLiteral("--as"),
                            QStringLiteral("turnstile"), QStringLiteral("--speed"),
                            QString::fromLatin1(speed)});
        EXPECT_EQ(replay.exitCode(), 0) << speed;
        EXPECT_TRUE(replay.output().contains(QStringLiteral("sends   $01A10366\\r"))) << speed;
        EXPECT_TRUE(replay.output().contains(QStringLiteral("COME 01A 12345678 FINISH"))) << speed;
    }
    TProgramRun intoNothing({QStringLiteral("replay"), recording});
    EXPECT_NE(intoNothing.exitCode(), 0) << "neither --as nor --pty";
    TProgramRun refused({QStringLiteral("replay"), recording, QStringLiteral("--as"),
                         QStringLiteral("turnstile"), QStringLiteral("--speed"), QStringLiteral("0"),
                         QStringLiteral("--refuse")});
    EXPECT_EQ(refused.exitCode(), 0);
    EXPECT_TRUE(refused.output().contains(QStringLiteral("sends   $01A00064\\r")));
}

TEST_F(Watch, RecordingPlaysOutOnAPseudoTerminal)
{
    TProgramRun replay({QStringLiteral("replay"), file("gate.rec", kCardRecording), QStringLiteral("--as"),
                        QStringLiteral("turnstile"), QStringLiteral("--pty"), QStringLiteral("--speed"),
                        QStringLiteral("5")});
    ASSERT_TRUE(replay.says(QStringLiteral("as a serial port")));
    const QString path = replay.output().section(u' ', 1, 1);
    TProgramRun watch({QStringLiteral("watch"), path, QStringLiteral("--as"), QStringLiteral("turnstile")});
    EXPECT_TRUE(watch.says(QStringLiteral("passage done at turnstile 01A")));
    EXPECT_EQ(replay.exitCode(), 0);
}

TEST_F(Watch, WhatCannotBeDoneIsTold)
{
    TProgramRun bad({QStringLiteral("replay"), file("bad.rec", "# tnv5 recording 1\nnonsense\n"),
                     QStringLiteral("--as"), QStringLiteral("bus")});
    EXPECT_EQ(bad.exitCode(), 1);
    EXPECT_TRUE(bad.output().contains(QStringLiteral("line 2: ")));
    TProgramRun noPort({QStringLiteral("watch"), QStringLiteral("/does/not/exist"), QStringLiteral("--as"),
                        QStringLiteral("bus")});
    EXPECT_EQ(noPort.exitCode(), 1);
    TProgramRun noProtocol({QStringLiteral("watch"), QStringLiteral("/dev/null"), QStringLiteral("--as"),
                            QStringLiteral("morse")});
    EXPECT_NE(noProtocol.exitCode(), 0);
    EXPECT_TRUE(noProtocol.output().contains(QStringLiteral("{bus,turnstile,scales:1,")));
}

} // namespace
} // namespace tnv5::integration
