#include "sim/pty.h"

#include "program.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/platform/errors.h"

#include <QFileInfo>
#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using namespace tnv5::sim;

struct Pty : ::testing::Test
{
    Pty()
    {
        pty->OnRead = [this](const QByteArray& bytes) { heard += bytes; };
        pty->OnOpened = [this](bool opened) { opened ? ++openings : ++closings; };
    }

    /// A program opens the device, and the equipment has noticed.
    std::unique_ptr<TProgram> openProgram()
    {
        auto program = std::make_unique<TProgram>(pty->path());
        EXPECT_TRUE(program->valid());
        EXPECT_TRUE(eventually([&] { return pty->opened(); }));
        return program;
    }

    std::unique_ptr<TPty> pty = std::make_unique<TPty>(QStringLiteral("gate"));
    QByteArray heard;
    int openings = 0;
    int closings = 0;
};

double processorSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

TEST_F(Pty, BytesGoBothWaysUnchanged)
{
    const auto program = openProgram();
    QByteArray all;
    for (int value = 0; value < 256; ++value) {
        all += char(value);
    }
    pty->write(all);
    EXPECT_EQ(program->readUntil(all.size()), all);
    program->write(all);
    EXPECT_TRUE(eventually([&] { return heard.size() >= all.size(); }));
    EXPECT_EQ(heard, all);
    EXPECT_EQ(pty->lostBytes(), 0);
}

TEST_F(Pty, AFirstWriteFindsTheProgramThatHasJustCome)
{
    const TProgram program(pty->path());
    pty->write("at once");
    EXPECT_TRUE(pty->opened());
    EXPECT_EQ(program.readUntil(7), "at once");
}

TEST_F(Pty, TheDirectoryIsPrivate)
{
    struct stat info
    {
    };
    ASSERT_EQ(::stat(qPrintable(QFileInfo(pty->path()).path()), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);
    const QString path = pty->path();
    EXPECT_TRUE(path.endsWith(QStringLiteral("/gate")));
    pty.reset();
    EXPECT_FALSE(QFileInfo::exists(QFileInfo(path).path()));
}

TEST_F(Pty, TakesOnlyFileNames)
{
    for (const QString& wrong : {QString(), QStringLiteral("."), QStringLiteral(".."), QStringLiteral("a/b"),
                                 QString(QChar(0)), QString(300, QLatin1Char('x'))}) {
        EXPECT_THROW(TPty{wrong}, tnv5::platform::Exception) << wrong.toStdString();
    }
}

TEST_F(Pty, WhatIsSentWhileNobodyListensIsLost)
{
    pty->write("nobody");
    EXPECT_EQ(pty->lostBytes(), 6);
    const auto program = openProgram();
    pty->write("somebody");
    EXPECT_EQ(program->readUntil(8), "somebody");
}

TEST_F(Pty, WhatAProgramLeftUnreadDoesNotMeetTheNextOne)
{
    auto program = openProgram();
    pty->write("unread");
    program.reset();
    EXPECT_TRUE(eventually([&] { return !pty->opened(); }));
    program = openProgram();
    pty->write("fresh");
    EXPECT_EQ(program->readUntil(5), "fresh");
    EXPECT_EQ(openings, 2);
    EXPECT_EQ(closings, 1);
}

TEST_F(Pty, HearsAProgramThatSpeaksAndIsGone)
{
    TProgram(pty->path()).write("$0009001D\r");
    EXPECT_TRUE(eventually([&] { return closings == 1; }));
    EXPECT_EQ(heard, "$0009001D\r");
    EXPECT_FALSE(pty->opened());
}

TEST_F(Pty, UnpluggingHangsUpAndTakesThePathAway)
{
    const auto program = openProgram();
    pty->unplug();
    pty->unplug();
    EXPECT_FALSE(pty->plugged());
    EXPECT_FALSE(pty->opened());
    EXPECT_EQ(closings, 1);
    EXPECT_TRUE(program->hungUp());
    EXPECT_FALSE(TProgram(pty->path()).valid());
    pty->write("lost");
    EXPECT_EQ(pty->lostBytes(), 4);
}

TEST_F(Pty, PluggedInAgainItIsAtTheSamePath)
{
    const QString path = pty->path();
    for (int round = 0; round < 3; ++round) {
        const auto program = openProgram();
        const QByteArray text = "round " + QByteArray::number(round);
        heard.clear();
        program->write(text);
        EXPECT_TRUE(eventually([&] { return heard == text; }));
        pty->write(text);
        EXPECT_EQ(program->readUntil(text.size()), text);
        pty->unplug();
        EXPECT_TRUE(program->hungUp());
        pty->plug();
        pty->plug();
        EXPECT_EQ(pty->path(), path);
    }
}

TEST_F(Pty, AProgramThatDoesNotReadBlocksNothingAndIsSpared)
{
    const auto program = openProgram();
    const QByteArray line = "$01AR" + QByteArray(58, '7') + '\r';
    const int lines = 4'000; // far more than fits
    for (int i = 0; i < lines; ++i) {
        pty->write(line);
    }
    EXPECT_GT(pty->lostBytes(), 0);
    const qint64 expected = qint64{lines} * line.size() - pty->lostBytes();
    QByteArray received;
    EXPECT_TRUE(eventually([&] {
        received += program->read();
        return received.size() >= expected;
    }));
    EXPECT_EQ(received, line.repeated(lines).left(expected)); // whole lines, in order
}

TEST_F(Pty, ASetSpeedTakesItsTime)
{
    pty->BaudRate = 9'600;
    const auto program = openProgram();
    const QByteArray text(96, 'x'); // a tenth of a second
    QElapsedTimer time;
    time.start();
    pty->write(text);
    QByteArray received;
    EXPECT_TRUE(eventually([&] {
        received += program->read();
        return received.size() >= text.size();
    }));
    EXPECT_EQ(received, text);
    EXPECT_GE(time.elapsed(), 80);
    pty->write(text);
    pty->BaudRate = 0;
    received.clear();
    EXPECT_TRUE(eventually([&] {
        received += program->read();
        return received.size() >= text.size();
    }));
}

TEST_F(Pty, DoesNotSpinWhileNobodyHasItOpen)
{
    openProgram().reset();
    EXPECT_TRUE(eventually([&] { return closings == 1; }));
    const double before = processorSeconds();
    QElapsedTimer time;
    time.start();
    eventually([&] { return time.elapsed() >= 300; });
    EXPECT_LT(processorSeconds() - before, 0.15);
}

TEST_F(Pty, AHandlerMayUnplugPlugOrDestroy)
{
    auto program = openProgram();
    pty->OnRead = [this](const QByteArray&) {
        pty->unplug();
        pty->plug();
    };
    program->write("x");
    EXPECT_TRUE(eventually([&] { return closings == 1; }));
    program = openProgram();
    pty->OnRead = [this](const QByteArray&) { pty.reset(); };
    program->write("x");
    EXPECT_TRUE(eventually([&] { return pty == nullptr; }));
    EXPECT_TRUE(program->hungUp());
}

TEST_F(Pty, TheOpeningHookMayUnplugOrDestroy)
{
    pty->OnOpened = [this](bool opened) {
        if (opened) {
            pty->unplug();
        }
    };
    const TProgram first(pty->path());
    EXPECT_TRUE(eventually([&] { return !pty->plugged(); }));
    pty->plug();
    pty->OnOpened = [this](bool) { pty.reset(); };
    const TProgram second(pty->path());
    pty->write("x");
    EXPECT_EQ(pty, nullptr);
}

} // namespace
