#include "tnv5/host/now_output.h"

#include <QFile>
#include <QTemporaryDir>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tnv5::host {
namespace {

using TWritten = TNowOutput::TWritten;

struct TNowOutputTest : ::testing::Test
{
    TNowOutputTest()
    {
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        EXPECT_EQ(fcntl(ends[0], F_SETPIPE_SZ, 4'096), 4'096);
        output.attach(ends[1]);
    }
    ~TNowOutputTest() override
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }

    QByteArray read(qsizetype most) const
    {
        QByteArray bytes(most, Qt::Uninitialized);
        bytes.resize(::read(ends[0], bytes.data(), std::size_t(most)));
        return bytes;
    }

    std::array<int, 2> ends = {-1, -1};
    TNowOutput output;
};

TEST_F(TNowOutputTest, WhatIsFullTakesNoShortLineEither)
{
    const QByteArray line = QByteArray(999, 'x') + '\n';
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(output.write(line), TWritten::Yes);
    }
    EXPECT_EQ(output.write(line), TWritten::No);
    EXPECT_EQ(output.write("a\n"), TWritten::No) << "it would look as if somebody read again";
    EXPECT_EQ(output.why(), QString());
    EXPECT_EQ(read(4'096).size(), 4'000);
    EXPECT_EQ(output.write("a\n"), TWritten::Yes);
    EXPECT_EQ(read(4'096), "a\n");
}

TEST_F(TNowOutputTest, TheRestOfALineComesBeforeTheNext)
{
    EXPECT_EQ(output.write(QByteArray(5'000, 'x') + '\n'), TWritten::Yes) << "it has begun";
    EXPECT_EQ(output.write("a\n"), TWritten::No);
    EXPECT_EQ(read(4'096).size(), 4'096);
    EXPECT_EQ(output.write("b\n"), TWritten::Yes);
    EXPECT_EQ(read(4'096), QByteArray(904, 'x') + "\nb\n");
}

TEST_F(TNowOutputTest, ALineThatWasBegunHasAnEndWhenItIsAttachedAgain)
{
    EXPECT_EQ(output.write(QByteArray(5'000, 'x') + '\n'), TWritten::Yes);
    output.attach(ends[1]);
    EXPECT_EQ(read(4'096).size(), 4'096);
    EXPECT_EQ(output.write("b\n"), TWritten::Yes);
    EXPECT_EQ(read(4'096), "\nb\n");
}

TEST_F(TNowOutputTest, TheReaderHasGone)
{
    ::close(ends[0]);
    ends[0] = -1;
    ASSERT_NE(signal(SIGPIPE, SIG_IGN), SIG_ERR);
    EXPECT_EQ(output.write("a\n"), TWritten::Failed);
    EXPECT_EQ(output.why(), QStringLiteral("nobody reads it any more"));
}

TEST_F(TNowOutputTest, PatienceHasAnEnd)
{
    EXPECT_EQ(output.write(QByteArray(4'096, 'x')), TWritten::Yes);
    EXPECT_EQ(output.write("a\n"), TWritten::No);
    output.bePatient(20);
    EXPECT_EQ(output.write("b\n"), TWritten::No);
    read(4'096);
    EXPECT_EQ(output.write("c\n"), TWritten::Yes);
}

TEST(TNowOutputFile, LinesStandBehindWhatIsThere)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a.log"));
    TNowOutput output;
    EXPECT_FALSE(output.open(folder.filePath(QStringLiteral("none/a.log"))));
    EXPECT_EQ(output.why(), QStringLiteral("No such file or directory"));
    for (const char* line : {"1\n", "2\n"}) {
        ASSERT_TRUE(output.open(file));
        EXPECT_EQ(output.write(line), TWritten::Yes);
    }
    output.close();
    EXPECT_FALSE(output.isOpen());
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "1\n2\n");

    written.close();
    ASSERT_TRUE(written.resize(3)); // as a full disk leaves it
    ASSERT_TRUE(output.open(file));
    EXPECT_EQ(output.write("3\n"), TWritten::Yes);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "1\n2\n3\n");
}

} // namespace
} // namespace tnv5::host
