// The dialogues and frames of docs/bank-terminal.md, played line by line. In a block "```dialogue", a line
// "terminal BYTES" is one read; a line behind two blanks is what the component then does.

#include "bank_fixture.h"
#include "support/dialogue_page.h"
#include "tnv5/bank/bank_frame.h"

#include <QRegularExpression>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

QString page()
{
    return pageOf(QStringLiteral(TNV5_DOCS "/bank-terminal.md"));
}

TEST(Page, DialoguesArePlayedAsTheyStand)
{
    static const QRegularExpression applied(QStringLiteral(" apply=[01]$"));
    const QList<QStringList> dialogues = dialoguesOf(page());
    EXPECT_EQ(dialogues.size(), 3);
    for (const QStringList& lines : dialogues) {
        TBankFixture fixture;
        QStringList played;
        for (const QString& line : lines) {
            if (!line.startsWith("terminal ")) {
                continue;
            }
            played << line;
            fixture.feed(unescaped(line.mid(9)));
            for (QString each : fixture.trace.take()) {
                each.remove(applied);
                played << "  " + (each.startsWith("amount") ? "amount" : each);
            }
        }
        EXPECT_EQ(normalised(played), normalised(lines));
    }
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
