// docs/bank-pos.md names exactly the methods that each library is asked, and every text.

#include "pos_cases.h"
#include "support/dialogue_page.h"
#include "tnv5/bank/bank_pos_texts.h"

#include <QMetaProperty>
#include <QRegularExpression>
#include <QSet>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

QString page()
{
    return pageOf(QStringLiteral(TNV5_DOCS "/bank-pos.md"));
}

/// Words in the second column of a back-end's table.
QSet<QString> documented(int type)
{
    const QString text = page();
    const auto begins = text.indexOf(QStringLiteral("### %1: ").arg(type));
    const auto ends = text.indexOf(QStringLiteral("\n### "), begins + 1);
    static const QRegularExpression row(QStringLiteral("^\\| ([^|]*) \\| ([^|]*) \\|$"),
                                        QRegularExpression::MultilineOption);
    static const QRegularExpression word(QStringLiteral("`(\\w+)`"));
    QSet<QString> names;
    const QString section = text.mid(begins, ends - begins);
    for (auto rows = row.globalMatch(section); rows.hasNext();) {
        for (auto words = word.globalMatch(rows.next().captured(2)); words.hasNext();) {
            names << words.next().captured(1);
        }
    }
    return names - QSet<QString>{"TimeOut", "GetMerchantID"};
}

TEST(PosPage, NamesTheMethodsOfEachLibrary)
{
    for (int type = 0; type < 5; ++type) {
        QSet<QString> called;
        for (const TPosCase& each : posCases()) {
            for (const QString& line : each.lines) {
                const QStringList words = line.split(QRegularExpression("[ (]"));
                if (each.type == type && (words[0] == "call" || words[0] == "put")) {
                    called << words[1];
                }
            }
        }
        const QSet<QString> names = documented(type);
        EXPECT_EQ(QStringList((called - names).values()).join(' '), "") << "not on the page: " << type;
        EXPECT_EQ(QStringList((names - called).values()).join(' '), "") << "only on the page: " << type;
    }
}

TEST(PosPage, HasEveryPropertyAndTheTextsOfTheLog)
{
    const QString text = page();
    const QMetaObject& meta = TBankPOS::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        EXPECT_TRUE(text.contains(QStringLiteral("`%1`").arg(meta.property(i).name())))
            << meta.property(i).name();
    }
    namespace t = bank::texts;
    for (const QString& each :
         {t::kInit,       t::kConnect,      t::kDisconnect,      t::kDeviceInfo,     t::kTest,
          t::kPurchase,   t::kCashAdvance,  t::kXReport,         t::kZReport,        t::kWaitLoop,
          t::kConnected,  t::kNotConnected, t::kTerminalAnswers, t::kTerminalSilent, t::kBankAnswers,
          t::kBankSilent, t::kEnd,          t::kResponse,        t::kNotSent,        t::kCallFailed}) {
        EXPECT_TRUE(QString(text).replace('\n', ' ').contains(u'"' + each + u'"')) << each.toStdString();
    }
    for (int type = 0; type < 5; ++type) {
        EXPECT_TRUE(text.contains(QString::fromStdU16String(kProgIds[type]))) << type;
    }
}

} // namespace
