// Watching a line, recording it and playing the recording, as a person does it.

#include "integration/program_run.h"
#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/tools/recording.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tnv5::integration {
namespace {

class TRun : public TProgramRun
{
public:
    explicit TRun(const QStringList& arguments) : TProgramRun(QStringLiteral(TNV5_PROGRAM), arguments) {}
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
    TRun watch({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("bus"),
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

    TRun replay({QStringLiteral("replay"), recording, QStringLiteral("--as"), QStringLiteral("bus"),
                 QStringLiteral("--speed"), QStringLiteral("0")});
    EXPECT_EQ(replay.exitCode(), 0);
    EXPECT_TRUE(replay.output().contains(QStringLiteral("sends   $000AECHOB6")));
    EXPECT_TRUE(replay.output().contains(QStringLiteral("routes  #0.0.0.0:000APING22")));
}

TEST_F(Watch, AnUnpluggedPortEndsIt)
{
    sim::TPty pty(QStringLiteral("boards"));
    TRun watch({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("turnstile")});
    ASSERT_TRUE(watch.says(QStringLiteral("Listening to")));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    pty.unplug();
    EXPECT_EQ(watch.exitCode(), 1);
    EXPECT_TRUE(watch.complaints().contains(QStringLiteral("went away")));
}

TEST_F(Watch, RecordingOfATurnstilePlaysIntoTheComponent)
{
    const QString recording = file("gate.rec", kCardRecording);
    for (const char* speed : {"0", "50"}) {
        TRun replay({QStringLiteral("replay"), recording, QStringLiteral("--as"), QStringLiteral("turnstile"),
                     QStringLiteral("--speed"), QString::fromLatin1(speed)});
        EXPECT_EQ(replay.exitCode(), 0) << speed;
        EXPECT_TRUE(replay.output().contains(QStringLiteral("sends   $01A10366\\r"))) << speed;
        EXPECT_TRUE(replay.output().contains(QStringLiteral("COME 01A 12345678 FINISH"))) << speed;
    }
    TRun intoNothing({QStringLiteral("replay"), recording});
    EXPECT_NE(intoNothing.exitCode(), 0) << "neither --as nor --pty";
    TRun refused({QStringLiteral("replay"), recording, QStringLiteral("--as"), QStringLiteral("turnstile"),
                  QStringLiteral("--speed"), QStringLiteral("0"), QStringLiteral("--refuse")});
    EXPECT_EQ(refused.exitCode(), 0);
    EXPECT_TRUE(refused.output().contains(QStringLiteral("sends   $01A00064\\r")));
}

TEST_F(Watch, RecordingPlaysOutOnAPseudoTerminal)
{
    // what follows after an hour leaves the programs all the time they need
    const QByteArray withMore = kCardRecording + "+3600.000000 < $01AP\\r\n";
    for (const bool toItsEnd : {false, true}) {
        const QByteArray content = toItsEnd ? kCardRecording : withMore;
        TRun replay({QStringLiteral("replay"), file("gate.rec", content), QStringLiteral("--as"),
                     QStringLiteral("turnstile"), QStringLiteral("--pty"), QStringLiteral("--speed"),
                     QStringLiteral("5")});
        ASSERT_TRUE(replay.says(QStringLiteral("as a serial port")));
        const QString path = replay.output().section(u' ', 1, 1);
        TRun watch({QStringLiteral("watch"), path, QStringLiteral("--as"), QStringLiteral("turnstile")});
        if (!toItsEnd) {
            EXPECT_TRUE(watch.says(QStringLiteral("passage done at turnstile 01A")));
            replay.stop();
        }
        EXPECT_EQ(replay.exitCode(), toItsEnd ? 0 : 130);
    }
}

TEST_F(Watch, ARecordingThatAPowerCutEndedPlays)
{
    TRun replay({QStringLiteral("replay"), file("gate.rec", kCardRecording + "+0.1"), QStringLiteral("--as"),
                 QStringLiteral("turnstile"), QStringLiteral("--speed"), QStringLiteral("0")});
    EXPECT_EQ(replay.exitCode(), 0);
    EXPECT_TRUE(replay.output().contains(QStringLiteral("COME 01A 12345678 FINISH")));
    EXPECT_EQ(replay.complaints(),
              file("gate.rec") + QStringLiteral(": line 5 is only half there and is left out\n"));
}

TEST_F(Watch, APartOfARecordingPlays)
{
    TRun replay({QStringLiteral("replay"), file("gate.rec", kCardRecording), QStringLiteral("--as"),
                 QStringLiteral("turnstile"), QStringLiteral("--speed"), QStringLiteral("0"),
                 QStringLiteral("--from"), QStringLiteral("0.1"), QStringLiteral("--until"),
                 QStringLiteral("0.5")});
    EXPECT_EQ(replay.exitCode(), 0) << replay.complaints().toStdString();
    EXPECT_TRUE(replay.output().contains(QStringLiteral("hears #01ARelay 1")));
    EXPECT_EQ(replay.output().count(QStringLiteral("hears ")), 1);
}

TEST_F(Watch, APipeIsNoRecording)
{
    const QString pipe = file("pipe.rec");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    TRun replay({QStringLiteral("replay"), pipe, QStringLiteral("--as"), QStringLiteral("bus")});
    EXPECT_EQ(replay.exitCode(), 1);
    EXPECT_EQ(
        replay.complaints(),
        QStringLiteral("tnv5: %1: a recording is read twice, so it must be a file; write what comes here "
                       "into one first\n")
            .arg(pipe));
}

TEST_F(Watch, WhatIsAboutARecordingNeedsOne)
{
    for (const QStringList& words : {QStringList{QStringLiteral("--force")},
                                     QStringList{QStringLiteral("--rotate"), QStringLiteral("1M")}}) {
        TRun watch(QStringList{QStringLiteral("watch"), QStringLiteral("/dev/null"), QStringLiteral("--as"),
                               QStringLiteral("bus")} +
                   words);
        EXPECT_EQ(watch.exitCode(), 2) << qPrintable(words[0]);
        EXPECT_TRUE(watch.complaints().contains(words[0] + QStringLiteral(" requires --record")))
            << qPrintable(watch.complaints());
    }
}

TEST_F(Watch, WhatCannotBeDoneIsTold)
{
    TRun bad({QStringLiteral("replay"), file("bad.rec", "# tnv5 recording 1\nnonsense\n"),
              QStringLiteral("--as"), QStringLiteral("bus")});
    EXPECT_EQ(bad.exitCode(), 1);
    EXPECT_TRUE(bad.complaints().contains(QStringLiteral("line 2: ")));
    TRun noPort({QStringLiteral("watch"), QStringLiteral("/does/not/exist"), QStringLiteral("--as"),
                 QStringLiteral("bus")});
    EXPECT_EQ(noPort.exitCode(), 1);
    TRun noProtocol({QStringLiteral("watch"), QStringLiteral("/dev/null"), QStringLiteral("--as"),
                     QStringLiteral("morse")});
    EXPECT_NE(noProtocol.exitCode(), 0);
    EXPECT_TRUE(noProtocol.complaints().contains(QStringLiteral("{bus,turnstile,scales:1,")));
}

TEST_F(Watch, RecordingsAreNotOverwrittenAndFailuresEndIt)
{
    sim::TPty pty(QStringLiteral("boards"));
    const QStringList watching = {QStringLiteral("watch"), pty.path(), QStringLiteral("--as"),
                                  QStringLiteral("bus"), QStringLiteral("--record")};
    const QString mine = file("mine.rec", "mine");
    TRun refused(watching + QStringList{mine});
    EXPECT_EQ(refused.exitCode(), 1);
    EXPECT_EQ(refused.complaints(),
              QStringLiteral("tnv5: %1: the file is there already; --force overwrites it\n").arg(mine));
    EXPECT_EQ(QFile(mine).size(), 4);

    TRun full(watching + QStringList{QStringLiteral("/dev/full"), QStringLiteral("--force")});
    EXPECT_EQ(full.exitCode(), 1);
    EXPECT_EQ(full.complaints(),
              QStringLiteral("tnv5: /dev/full: the recording cannot be written: No space left on device\n"));
}

TEST_F(Watch, RotatedRecordingsPlayAsOneAndInPart)
{
    sim::TPty pty(QStringLiteral("boards"));
    const QString recording = file("bus.rec");
    TRun watch({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("bus"),
                QStringLiteral("--record"), recording, QStringLiteral("--rotate"), QStringLiteral("100")});
    ASSERT_TRUE(watch.says(QStringLiteral("Listening to")));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    for (int each = 0; each < 10; ++each) {
        pty.write("$000APING26\r");
        ASSERT_TRUE(
            eventually([&] { return watch.output().count(QStringLiteral("board 000A pings")) == each + 1; }));
    }
    watch.stop();
    EXPECT_EQ(watch.exitCode(), 0);
    EXPECT_TRUE(QFile::exists(recording + QStringLiteral(".2")));
    QStringList files = {recording};
    for (int number = 2; QFile::exists(QStringLiteral("%1.%2").arg(recording).arg(number)); ++number) {
        files << QStringLiteral("%1.%2").arg(recording).arg(number);
    }
    TRun replay(QStringList{QStringLiteral("replay"), QStringLiteral("--as"), QStringLiteral("bus"),
                            QStringLiteral("--speed"), QStringLiteral("0")} +
                files);
    EXPECT_EQ(replay.exitCode(), 0);
    EXPECT_EQ(replay.output().count(QStringLiteral("routes  #0.0.0.0:000APING22")), 10);

    const QString gate = file("gate.rec", kCardRecording);
    TRun cut({QStringLiteral("replay"), gate, QStringLiteral("--as"), QStringLiteral("turnstile"),
              QStringLiteral("--speed"), QStringLiteral("0"), QStringLiteral("--from"), QStringLiteral("0"),
              QStringLiteral("--until"), QStringLiteral("0.5")});
    EXPECT_EQ(cut.exitCode(), 0);
    EXPECT_TRUE(cut.output().contains(QStringLiteral("sends   $01A10366\\r")));
    EXPECT_FALSE(cut.output().contains(QStringLiteral("FINISH")));
    TRun wrong({QStringLiteral("replay"), gate, QStringLiteral("--pty"), QStringLiteral("--from"),
                QStringLiteral("noon")});
    EXPECT_EQ(wrong.exitCode(), 1);
    EXPECT_EQ(wrong.complaints(),
              QStringLiteral("tnv5: \"noon\" is no time of a recording; write it like 90, 1:30 or "
                             "1:02:03.5\n"));
}

TEST_F(Watch, WaitsForAPortThatComesAndGoes)
{
    sim::TPty pty(QStringLiteral("boards"));
    pty.unplug();
    const QStringList watching = {QStringLiteral("watch"), pty.path(), QStringLiteral("--as"),
                                  QStringLiteral("bus")};
    TRun watch(watching + QStringList{QStringLiteral("--wait"), QStringLiteral("--record"), file("bus.rec")});
    ASSERT_TRUE(watch.says(QStringLiteral("There is no device ") + pty.path()));
    for (int time = 1; time <= 2; ++time) {
        pty.plug();
        ASSERT_TRUE(eventually([&] { return watch.output().count(QStringLiteral("Listening to")) == time; }));
        ASSERT_TRUE(eventually([&] {
            pty.write("$000APING26\r");
            return watch.output().count(QStringLiteral("board 000A pings")) >= time;
        }));
        pty.unplug();
        ASSERT_TRUE(
            eventually([&] { return watch.complaints().count(QStringLiteral("went away")) == time; }));
    }
    watch.stop();
    EXPECT_EQ(watch.exitCode(), 0);
    EXPECT_GE(tools::readRecording(file("bus.rec")).size(), 2);
    TRun noRate(watching +
                QStringList{QStringLiteral("--wait"), QStringLiteral("--baud"), QStringLiteral("0")});
    EXPECT_EQ(noRate.exitCode(), 1);
}

TEST_F(Watch, ADeviceHasOneUserWhateverItsName)
{
    sim::TPty pty(QStringLiteral("boards"));
    const QString link = file("other-name");
    ASSERT_TRUE(QFile::link(pty.path(), link));
    TRun first({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("bus")});
    ASSERT_TRUE(first.says(QStringLiteral("Listening to")));
    TRun second({QStringLiteral("watch"), link, QStringLiteral("--as"), QStringLiteral("bus"),
                 QStringLiteral("--baud"), QStringLiteral("1200")});
    EXPECT_EQ(second.exitCode(), 1);
    const QString said = second.complaints();
    EXPECT_TRUE(said.startsWith(link + QStringLiteral(" is held by another program:\n  tnv5 (process ")))
        << qPrintable(said);
    EXPECT_TRUE(
        said.endsWith(QStringLiteral("tnv5: Cannot open port %1: another program has it open\n").arg(link)))
        << qPrintable(said);
    EXPECT_FALSE(said.contains(QStringLiteral("kill")));

    TRun noRate({QStringLiteral("watch"), link, QStringLiteral("--as"), QStringLiteral("bus"),
                 QStringLiteral("--baud"), QStringLiteral("0")});
    EXPECT_EQ(noRate.exitCode(), 1);
    EXPECT_TRUE(noRate.complaints().contains(QStringLiteral("there is no rate of 0 baud")))
        << qPrintable(noRate.complaints());
    EXPECT_FALSE(noRate.complaints().contains(QStringLiteral("held"))) << qPrintable(noRate.complaints());
    first.stop();
    EXPECT_EQ(first.exitCode(), 0);
}

} // namespace
} // namespace tnv5::integration
