#include "pos_fixture.h"
#include "support/published_suite.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TPublishedPos
{
    using Component = TBankPOS;

    static TPublishedTable table()
    {
        return {
            {"PosType", 0},
            {"logfile", QString()},
            {"log", false},
            {"ComPort", 0},
            {"ComPortRate", 0},
            {"IP", QString()},
            {"IPPort", 0},
            {"TimeOut", 0},
            {"Language", 0},
            {"RRN", QString()},
            {"TransactionID", QString()},
            {"AuthID", QString()},
            {"PAN", QString()},
            {"IssuerName", QString()},
            {"MerchantID", QString()},
            {"TerminalID", QString()},
            {"DeviceModelName", QString()},
            {"DeviceSerialNumber", QString()},
            {"DeviceSoftVer", QString()},
            {"DeviceTerminalID", QString()},
            {"LibVersion", QString()},
            {"LastError", 0, TPublished::ReadOnly},
            {"LastErrorMsg", QString(), TPublished::ReadOnly},
            {"LastStatus", 0, TPublished::ReadOnly},
            {"LastStatusMsg", QString(), TPublished::ReadOnly},
            {"TotalsDebitAmt", QString()},
            {"TotalsDebitNum", QString()},
            {"TotalsCreditAmt", QString()},
            {"TotalsCreditNum", QString()},
            {"TotalsCancelledAmt", QString()},
            {"TotalsCancelledNum", QString()},
            {"OnLog", platform::TLogEvent()},
            {"OnError", bank::TStatusEvent()},
            {"OnStatus", bank::TStatusEvent()},
        };
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(BankPos, Published, TPublishedPos);

TEST(PosProperties, TextsKeepWhatIsWrittenEachItsOwn)
{
    TBankPOS pos;
    const auto table = TPublishedPos::table();
    for (const TPublished& row : table) {
        if (row.type == QMetaType::fromType<QString>() && row.access == TPublished::ReadWrite) {
            EXPECT_TRUE(pos.setProperty(row.name, QStringLiteral("of ") + row.name));
        }
    }
    for (const TPublished& row : table) {
        if (row.type == QMetaType::fromType<QString>() && row.access == TPublished::ReadWrite) {
            EXPECT_EQ(pos.property(row.name).toString(), QStringLiteral("of ") + row.name);
        }
    }
    EXPECT_TRUE(pos.setProperty("log", true));
    EXPECT_TRUE(pos.log());
}

TEST(PosProperties, EventsAreCalledAndReadBack)
{
    QStringList heard;
    TBankPOS pos; // tells its end
    EXPECT_TRUE(pos.setProperty("OnLog", QVariant::fromValue(platform::TLogEvent(
                                             [&](TComponent*, const QString& text) { heard << text; }))));
    EXPECT_TRUE(pos.setProperty(
        "OnError", QVariant::fromValue(bank::TStatusEvent([&](TComponent*, int code, const QString& text) {
            heard << QString::number(code) + text;
        }))));
    EXPECT_TRUE(pos.setProperty(
        "OnStatus", QVariant::fromValue(bank::TStatusEvent([&](TComponent*, int code, const QString& text) {
            heard << text + QString::number(code);
        }))));
    pos.property("OnLog").value<platform::TLogEvent>()(&pos, "a");
    pos.property("OnError").value<bank::TStatusEvent>()(&pos, 1, "b");
    pos.property("OnStatus").value<bank::TStatusEvent>()(&pos, 2, "c");
    EXPECT_EQ(heard.join(u' '), "a 1b c2");
}

TEST(PosProperties, ErrorsAndStatusesAreKeptBeforeTheyAreTold)
{
    TPosFixture fixture;
    TBankPOS& pos = *fixture.pos;
    fixture.trace.OnLine = [&](const QString& line) {
        if (line.startsWith(u"error")) {
            EXPECT_EQ(error(pos.GetLastError(), pos.LastErrorMsg()), line);
        } else {
            EXPECT_EQ(status(pos.GetLastStatus(), pos.LastStatusMsg()), line);
        }
    };
    pos.ShowError(-7, "seven");
    pos._OnMsgReceived("a card, please");
    fixture.trace.expect({error(-7, "seven"), status(0, "a card, please")});
    EXPECT_EQ(pos.property("LastError").toInt(), -7);
    EXPECT_EQ(pos.property("LastErrorMsg").toString(), "seven");
    EXPECT_EQ(pos.property("LastStatus").toInt(), 0);
    EXPECT_EQ(pos.property("LastStatusMsg").toString(), "a card, please");
    pos._OnTrxComplete(12);
    fixture.trace.expect({});
    EXPECT_EQ(pos.GetLastError(), 12);
    EXPECT_EQ(pos.LastErrorMsg(), "seven");
}

TEST(PosProperties, TheStatusKeepsTheLibrarysCode)
{
    TPosFixture fixture(1);
    fixture.answer("LastResult", {2, 0});
    fixture.answer("LastStatMsgCode", {44});
    fixture.answer("LastStatMsgDescription", {u"enter PIN"});
    EXPECT_TRUE(fixture.pos->ZReport(1));
    EXPECT_EQ(fixture.pos->property("LastStatus").toInt(), 44);
    EXPECT_EQ(fixture.pos->LastStatusMsg(), "enter PIN");
}

TEST(PosProperties, WithoutHandlersNothingIsMissed)
{
    TBankPOS pos;
    pos.ShowError(3, "three");
    pos._OnMsgReceived("status");
    EXPECT_EQ(pos.GetLastError(), 3);
    EXPECT_EQ(pos.LastStatusMsg(), "status");
    EXPECT_FALSE(pos.Purchase(1, 0, 0));
    EXPECT_EQ(pos.GetLastError(), -1);
}

TEST(PosProperties, TheTextMayBeTheComponentsOwn)
{
    TPosFixture fixture;
    TBankPOS& pos = *fixture.pos;
    pos.ShowError(1, "first");
    fixture.trace.take();
    const QString& kept = pos.LastErrorMsg();
    pos.ShowError(2, kept);
    fixture.trace.expect({error(2, "first")});
}

} // namespace
