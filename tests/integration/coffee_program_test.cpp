// The coffee machine's code from the command line, read back from its picture by programs that are not ours.

#include "support/text_printers.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/tools/coffee_check.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

const QString kKey = QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c");

struct TOutcome
{
    int exitCode = -1;
    QString output;
    QString complaints;

    /// What the program printed first: the text.
    QString text() const { return output.section(u'\n', 0, 0); }
};

TOutcome run(const QString& name, const QStringList& arguments, const QByteArray& input = {},
             const QString& configuration = {})
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!configuration.isEmpty()) {
        environment.insert(QStringLiteral("OPENSSL_CONF"), configuration);
    }
    program.setProcessEnvironment(environment);
    program.start(name, arguments);
    program.write(input);
    program.closeWriteChannel();
    if (!program.waitForFinished(30'000)) {
        program.kill();
        program.waitForFinished();
        return {-1, {}, program.errorString()};
    }
    return {program.exitCode(), QString::fromUtf8(program.readAllStandardOutput()),
            QString::fromUtf8(program.readAllStandardError())};
}

/// Seconds of the local clock.
quint32 stampNow()
{
    return coffee::UnixStamp(platform::Now());
}

class CoffeeProgram : public testing::Test
{
protected:
    void SetUp() override { write(QStringLiteral("key"), kKey.toLatin1() + '\n'); }

    QString path(const QString& name) const { return FFolder.filePath(name); }

    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    TOutcome qr(const QString& arguments, const QByteArray& input = {}) const
    {
        QStringList list = {QStringLiteral("qr")};
        for (const QString& argument : arguments.split(u' ', Qt::SkipEmptyParts)) {
            list << (argument.startsWith(u'@') ? path(argument.mid(1)) : argument);
        }
        return run(QStringLiteral(TNV5_PROGRAM), list, input);
    }

    /// The code in a picture, as an independent reader reads it.
    QString scanned(const QString& name) const
    {
        const TOutcome outcome =
            run(QStringLiteral("zbarimg"),
                {QStringLiteral("--nodbus"), QStringLiteral("--raw"), QStringLiteral("--quiet"), path(name)});
        EXPECT_EQ(outcome.exitCode, 0) << "zbar-tools: " << outcome.complaints.toStdString();
        return outcome.output.trimmed();
    }

    QTemporaryDir FFolder;
};

/// What a terminal makes of the lines of a drawing: each character is `kWide` by `kHigh` pixels.
QImage shownOnTerminal(const QStringList& lines)
{
    constexpr int kWide = 6;
    constexpr int kHigh = 12;
    static const QRegularExpression form(QStringLiteral("\\A\033\\[38;5;16;48;5;231m([ ▀▄█]*)\033\\[0m\\z"));
    QImage image(int(lines[0].size()) * kWide, int(lines.size()) * kHigh, QImage::Format_Grayscale8);
    image.fill(Qt::black); // a dark terminal
    for (int row = 0; row < lines.size(); ++row) {
        const QRegularExpressionMatch match = form.match(lines[row]);
        EXPECT_TRUE(match.hasMatch()) << lines[row].toStdString();
        const QString characters = match.captured(1);
        for (int x = 0; x < characters.size() * kWide; ++x) {
            for (int y = 0; y < kHigh; ++y) {
                const QChar character = characters[x / kWide];
                const bool dark = character == (y < kHigh / 2 ? u'▀' : u'▄') || character == u'█';
                image.setPixelColor(x, row * kHigh + y, dark ? Qt::black : Qt::white);
            }
        }
    }
    return image;
}

TEST_F(CoffeeProgram, PrintsTheText)
{
    const quint32 before = stampNow();
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 1 2 3 250 1"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
    EXPECT_EQ(outcome.complaints, QString());
    EXPECT_EQ(outcome.output, outcome.text() + u'\n');
    const tools::TCoffeeFields fields = tools::checkCoffeeText(outcome.text(), kKey);
    EXPECT_TRUE(fields.good());
    EXPECT_EQ(fields.Part1, 1);
    EXPECT_EQ(fields.Part2, 2);
    EXPECT_EQ(fields.Part3, 3);
    EXPECT_EQ(fields.Value1, 250);
    EXPECT_EQ(fields.Value2, 1);
    EXPECT_GE(fields.Stamp, before);
    EXPECT_LE(fields.Stamp, stampNow());
}

TEST_F(CoffeeProgram, ThePictureIsReadBack)
{
    for (int i = 0; i < 8; ++i) {
        const TOutcome outcome = qr(QStringLiteral("--key-file @key %1 %1 %1 %1 9 --png @code.png").arg(i));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
        EXPECT_EQ(scanned(QStringLiteral("code.png")), outcome.text());
    }
}

TEST_F(CoffeeProgram, TheDrawingForPaperIsReadBack)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 1 2 3 250 1 --svg @code.svg"));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
    const TOutcome drawn =
        run(QStringLiteral("rsvg-convert"),
            {path(QStringLiteral("code.svg")), QStringLiteral("-o"), path(QStringLiteral("drawn.png"))});
    ASSERT_EQ(drawn.exitCode, 0) << "librsvg2-bin: " << drawn.complaints.toStdString();
    EXPECT_EQ(scanned(QStringLiteral("drawn.png")), outcome.text());
}

TEST_F(CoffeeProgram, TheTerminalIsReadBack)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 1 2 3 250 1 --terminal"));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
    QStringList lines = outcome.output.split(u'\n');
    ASSERT_EQ(lines.size(), 1 + 17 + 1); // the text, 33 rows of modules in pairs, the end of the last line
    ASSERT_TRUE(shownOnTerminal(lines.mid(1, 17)).save(path(QStringLiteral("terminal.png"))));
    EXPECT_EQ(scanned(QStringLiteral("terminal.png")), outcome.text());
}

TEST_F(CoffeeProgram, TheKeyComesFromStandardInputToo)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file - 1 2 3 250 1"), kKey.toLatin1() + "\r\n");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
    EXPECT_TRUE(tools::checkCoffeeText(outcome.text(), kKey).good());
}

TEST_F(CoffeeProgram, ChecksAText)
{
    const TOutcome outcome = qr(QStringLiteral("--check O45931B4A9A54D107AFCD2FC67ED244D9S --key-file @key"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.complaints.toStdString();
    EXPECT_EQ(outcome.complaints, QString());
    const QStringList lines = outcome.output.split(u'\n');
    ASSERT_EQ(lines.size(), 9);
    EXPECT_EQ(lines.mid(0, 5), QStringLiteral("P1    1|P2    2|P3    3|V1    250|V2    1").split(u'|'));
    EXPECT_TRUE(lines[5].startsWith(QStringLiteral("time  2026-01-05 12:00:00, "))) << lines[5].toStdString();
    EXPECT_EQ(lines[6], QStringLiteral("fixed as they must be"));
    EXPECT_EQ(lines[7], QStringLiteral("CRC   holds"));
}

TEST_F(CoffeeProgram, ChecksWhatItMade)
{
    const QString text = qr(QStringLiteral("--key-file @key 1023 63 255 0xFFFF 0")).text();
    const TOutcome outcome = qr(QStringLiteral("--check %1 --key-file @key").arg(text));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(
        outcome.output.startsWith(QStringLiteral("P1    1023\nP2    63\nP3    255\nV1    65535\nV2    0\n")));
    EXPECT_TRUE(outcome.output.contains(QStringLiteral(" s ago\n"))) << outcome.output.toStdString();
}

TEST_F(CoffeeProgram, AnotherKeyIsTold)
{
    write(QStringLiteral("other"), QByteArray(32, '0'));
    const TOutcome outcome =
        qr(QStringLiteral("--check O45931B4A9A54D107AFCD2FC67ED244D9S --key-file @other"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.output.contains(QStringLiteral("CRC   WRONG: another key, or a damaged text\n")));
    EXPECT_TRUE(outcome.output.contains(QStringLiteral("fixed WRONG: bytes 0, 8 or 13\n")));
}

TEST_F(CoffeeProgram, NumbersThatAreCutAreTold)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 1024 -2 0x103 65535 -1"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.complaints,
              QStringLiteral("P1: only the low 10 bits of 1024 are used, which are 0\n"
                             "P2: only the low 6 bits of -2 are used, which are 62\n"
                             "P3: only the low 8 bits of 0x103 are used, which are 3\n"
                             "V2: only the low 16 bits of -1 are used, which are 65535\n"));
    const tools::TCoffeeFields fields = tools::checkCoffeeText(outcome.text(), kKey);
    EXPECT_EQ(fields.Part1, 0);
    EXPECT_EQ(fields.Part2, 62);
    EXPECT_EQ(fields.Part3, 3);
    EXPECT_EQ(fields.Value1, 65535);
    EXPECT_EQ(fields.Value2, 65535);
}

TEST_F(CoffeeProgram, ALeadingZeroIsNoOctalNumber)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 010 0 0 0 0"));
    EXPECT_EQ(tools::checkCoffeeText(outcome.text(), kKey).Part1, 10);
}

TEST_F(CoffeeProgram, WhatIsNoNumberIsTold)
{
    for (const char* number : {"x", "1.5", "0x", "4294967296", "-2147483649", "99999999999999999999"}) {
        const TOutcome outcome =
            qr(QStringLiteral("--key-file @key 1 2 3 4 %1").arg(QString::fromLatin1(number)));
        EXPECT_EQ(outcome.exitCode, 1) << number;
        EXPECT_EQ(outcome.complaints, QStringLiteral("tnv5: V2: \"%1\" is no whole number of 32 bits\n")
                                          .arg(QString::fromLatin1(number)));
        EXPECT_EQ(outcome.output, QString());
    }
}

TEST_F(CoffeeProgram, KeysOfAnotherLengthAreTold)
{
    const TOutcome shorter = qr(QStringLiteral("--key-file - 1 2 3 4 5"), "2b7e");
    EXPECT_EQ(shorter.exitCode, 0);
    EXPECT_EQ(shorter.complaints,
              QStringLiteral("The key has less than 32 digits; what is missing counts as 0\n"));
    EXPECT_TRUE(tools::checkCoffeeText(shorter.text(), QStringLiteral("2b7e")).good());
    const TOutcome longer = qr(QStringLiteral("--key-file - 1 2 3 4 5"), kKey.toLatin1() + "00");
    EXPECT_EQ(longer.exitCode, 0);
    EXPECT_EQ(longer.complaints, QStringLiteral("The key has more than 32 digits; the first 32 are used\n"));
    EXPECT_TRUE(tools::checkCoffeeText(longer.text(), kKey).good());
}

TEST_F(CoffeeProgram, FilesWithoutAKeyAreRefused)
{
    write(QStringLiteral("empty"), " \n");
    write(QStringLiteral("long"), QByteArray(4'097, '0'));
    const auto complaintOf = [&](const QString& name) {
        const TOutcome outcome = qr(QStringLiteral("--key-file @%1 1 2 3 4 5").arg(name));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, QString());
        EXPECT_EQ(outcome.complaints.count(u'\n'), 1);
        return outcome.complaints;
    };
    EXPECT_EQ(complaintOf(QStringLiteral("empty")),
              QStringLiteral("tnv5: %1: there is no key in it\n").arg(path(QStringLiteral("empty"))));
    EXPECT_EQ(complaintOf(QStringLiteral("long")),
              QStringLiteral("tnv5: %1: too long for a key\n").arg(path(QStringLiteral("long"))));
    EXPECT_EQ(complaintOf(QStringLiteral("missing")),
              QStringLiteral("tnv5: %1: No such file or directory\n").arg(path(QStringLiteral("missing"))));
    const TOutcome input = qr(QStringLiteral("--key-file - 1 2 3 4 5"));
    EXPECT_EQ(input.complaints, QStringLiteral("tnv5: standard input: there is no key in it\n"));
    const TOutcome endless = qr(QStringLiteral("--key-file /dev/zero 1 2 3 4 5"));
    EXPECT_EQ(endless.complaints, QStringLiteral("tnv5: /dev/zero: too long for a key\n"));
}

TEST_F(CoffeeProgram, TheKeyIsNeverShown)
{
    const QString bad = QStringLiteral("secret2b7e1516");
    for (const QString& arguments :
         {QStringLiteral("--key-file - 1 2 3 4 5 --terminal"),
          QStringLiteral("--key-file - --check O45931B4A9A54D107AFCD2FC67ED244D9S")}) {
        const TOutcome outcome = qr(arguments, bad.toLatin1());
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.complaints.endsWith(QStringLiteral("tnv5: The key is not hexadecimal\n")))
            << outcome.complaints.toStdString();
        EXPECT_FALSE((outcome.output + outcome.complaints).contains(QStringLiteral("2b7e")));
        EXPECT_FALSE((outcome.output + outcome.complaints).contains(QStringLiteral("secret")));
        const TOutcome good = qr(arguments, kKey.toLatin1());
        EXPECT_FALSE((good.output + good.complaints).contains(QStringLiteral("2b7e"), Qt::CaseInsensitive));
    }
}

TEST_F(CoffeeProgram, ThereIsNoOtherWayToGiveTheKey)
{
    EXPECT_NE(qr(QStringLiteral("--key %1 1 2 3 4 5").arg(kKey)).exitCode, 0);
    EXPECT_NE(qr(QStringLiteral("1 2 3 4 5")).exitCode, 0);
}

TEST_F(CoffeeProgram, WhatDoesNotGoTogetherIsTold)
{
    for (const char* arguments :
         {"--key-file @key", "--key-file @key 1 2 3 4", "--key-file @key 1 2 3 4 5 6",
          "--key-file @key 1 2 3 4 5 --terminal --png @a", "--key-file @key 1 2 3 4 5 --png @a --svg @b",
          "--key-file @key 1 2 3 4 5 --terminal --svg @a", "--key-file @key 1 --check x",
          "--key-file @key --check x --terminal", "--key-file @key --check x --png @a"}) {
        const TOutcome outcome = qr(QString::fromLatin1(arguments));
        EXPECT_GT(outcome.exitCode, 1) << arguments;
        EXPECT_EQ(outcome.output, QString()) << arguments;
    }
    EXPECT_EQ(QDir(FFolder.path()).entryList(QDir::Files), QStringList{QStringLiteral("key")});
}

TEST_F(CoffeeProgram, ATextThatIsNoneIsTold)
{
    const TOutcome outcome = qr(QStringLiteral("--check hello --key-file @key"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.complaints,
              QStringLiteral("tnv5: This is not \"O\", 32 upper-case hexadecimal digits, \"S\"\n"));
}

TEST_F(CoffeeProgram, AFileThatCannotBeWrittenIsTold)
{
    const TOutcome outcome = qr(QStringLiteral("--key-file @key 1 2 3 4 5 --png /no-such-folder/a.png"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.complaints, QStringLiteral("tnv5: /no-such-folder/a.png: No such file or directory\n"));
}

TEST_F(CoffeeProgram, ASystemWithoutTheCipherIsTold)
{
    write(QStringLiteral("openssl.cnf"), "openssl_conf = start\n[start]\nproviders = all\n"
                                         "[all]\nbase = base\n[base]\nactivate = 1\n");
    const QStringList key = {QStringLiteral("qr"), QStringLiteral("--key-file"), path(QStringLiteral("key"))};
    for (const QString& rest :
         {QStringLiteral("1 2 3 4 5"), QStringLiteral("--check O45931B4A9A54D107AFCD2FC67ED244D9S")}) {
        const TOutcome outcome = run(QStringLiteral(TNV5_PROGRAM), key + rest.split(u' '), {},
                                     path(QStringLiteral("openssl.cnf")));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.complaints, QStringLiteral("tnv5: AES-128 is not available\n"));
        EXPECT_EQ(outcome.output, QString());
    }
}

} // namespace
} // namespace tnv5::integration
