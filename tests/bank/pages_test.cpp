// The dialogues and frames of docs/bank-terminal.md, played line by line. In a block "```dialogue", a line
// "terminal BYTES" is one read; a line behind two blanks is what the component then does.

#include "bank_bench.h"

#include "support/text_printers.h"
#include "tnv5/bank/bank_frame.h"

#include <QFile>
#include <QRegularExpression>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

QString page()
{
    QFile file(QStringLiteral(TNV5_DOCS "/bank-terminal.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

QByteArray unescaped(const QString& text)
{
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\') {
            bytes += char(text.mid(i + 2, 2).toInt(nullptr, 16));
            i += 3;
        } else {
            bytes += text[i].toLatin1();
        }
    }
    return bytes;
}

TEST(Page, DialoguesArePlayedAsTheyStand)
{
    static const QRegularExpression block(QStringLiteral("^```dialogue\n(.*?)\n```$"),
                                          QRegularExpression::MultilineOption |
                                              QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression applied(QStringLiteral(" apply=[01]$"));
    const QString text = page();
    int blocks = 0;
    for (auto match = block.globalMatch(text); match.hasNext(); ++blocks) {
        TBankBench bench;
        QStringList played;
        const QStringList lines = match.next().captured(1).split(u'\n');
        for (const QString& line : lines) {
            if (!line.startsWith("terminal ")) {
                continue;
            }
            played << line;
            bench.feed(unescaped(line.mid(9)));
            for (QString each : bench.trace.take()) {
                each.remove(applied);
                played << "  " + (each.startsWith("amount") ? "amount" : each);
            }
        }
        EXPECT_EQ(played.join(u'\n').toStdString(), lines.join(u'\n').toStdString());
    }
    EXPECT_EQ(blocks, 3);
}

TEST(Page, FramesAreWhatTheComponentSendsAndHears)
{
    static const QRegularExpression row(QStringLiteral("^\\| ([^|]+) \\| `(\\\\x02[^`]+)` \\|$"),
                                        QRegularExpression::MultilineOption);
    QMap<QString, QByteArray> frames;
    const QString text = page();
    for (auto match = row.globalMatch(text); match.hasNext();) {
        const auto found = match.next();
        frames[found.captured(1)] = unescaped(found.captured(2));
    }
    ASSERT_EQ(frames.size(), 4);
    EXPECT_EQ(frames["amount 12.50"], bank::amountFrame(1250, 0).toLatin1());
    EXPECT_EQ(frames["amount 12.50, discount 1.00"], bank::amountFrame(1250, 100).toLatin1());
    EXPECT_EQ(frames["amount request"], kAskAmount);
    EXPECT_EQ(frames["end of the dialogue"], kFinish);
    for (const QByteArray& frame : frames) {
        EXPECT_TRUE(bank::isSound(QString::fromLatin1(frame)));
    }
}

TEST(Page, HasEveryMessageAndVersion)
{
    const QString text = page();
    TBankPos pos;
    pos.SetIDLang(2);
    for (int index = 0; index < 8; ++index) {
        EXPECT_TRUE(text.contains(QStringLiteral("| %1 | \"%2\"").arg(index).arg(pos.GetMessage(index))))
            << index;
    }
    QStringList names;
    pos.GetPosList(names);
    for (int type = 1; type < names.size(); ++type) {
        EXPECT_TRUE(text.contains(QStringLiteral("| %1, %2 |").arg(type).arg(names[type]))) << type;
    }
}

} // namespace
