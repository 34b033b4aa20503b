// Every operation on every back-end: the calls of the library, their arguments, the events and the results.

#include "pos_cases.h"

#include <QMetaProperty>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

void expectResults(const TBankPOS& pos, const TPosCase& wanted)
{
    const QMetaObject& meta = TBankPOS::staticMetaObject;
    for (int i = meta.indexOfProperty("RRN"); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        const QString name = QString::fromLatin1(property.name());
        if (property.metaType() != QMetaType::fromType<QString>() || !property.isWritable()) {
            continue;
        }
        const auto value = wanted.values.find(name);
        EXPECT_EQ(property.read(&pos).toString(),
                  value == wanted.values.end() ? "old " + name : value->second)
            << name.toStdString();
    }
}

std::string nameOf(const TPosCase& each)
{
    return std::to_string(each.type) + " " + each.name;
}

TEST(PosOperations, CallTheLibraryTellTheHostAndKeepTheResults)
{
    for (const TPosCase& each : posCases()) {
        SCOPED_TRACE(nameOf(each));
        TPosFixture fixture(each.type);
        each.setUp(fixture);
        spoilResults(*fixture.pos);
        EXPECT_EQ(each.operate(*fixture.pos), each.result);
        fixture.trace.expect(each.lines);
        expectResults(*fixture.pos, each);
    }
}

TEST(PosOperations, WorkWithoutHandlers)
{
    for (const TPosCase& each : posCases()) {
        SCOPED_TRACE(nameOf(each));
        TPosFixture fixture(each.type);
        fixture.pos->SetOnLog({});
        fixture.pos->SetOnError({});
        fixture.pos->SetOnStatus({});
        each.setUp(fixture);
        spoilResults(*fixture.pos);
        EXPECT_EQ(each.operate(*fixture.pos), each.result);
        expectResults(*fixture.pos, each);
    }
}

bool isCall(const QString& line)
{
    return line.startsWith(u"call ") || line.startsWith(u"put ");
}

/// What `Connect` says behind its failure.
QStringList endOf(const TPosCase& each)
{
    return each.lines.value(0) == kLogConnect ? QStringList{kLogNotConnected} : QStringList();
}

QVariant failureOf(const TPosCase& each)
{
    return each.result.typeId() == QMetaType::QString ? QVariant("-1") : QVariant(false);
}

TEST(PosOperations, AFailingCallAnywhereIsReportedAndEndsThem)
{
    int calls = 0;
    for (const TPosCase& each : posCases()) {
        for (qsizetype at = 0; at < each.lines.size(); ++at) {
            if (!isCall(each.lines[at])) {
                continue;
            }
            ++calls;
            SCOPED_TRACE(nameOf(each) + ", " + each.lines[at].toStdString());
            TPosFixture fixture(each.type);
            each.setUp(fixture);
            const qsizetype same = each.lines.first(at).count(each.lines[at]);
            qsizetype seen = 0;
            fixture.OnCall = [&](const QString& line) {
                if (line == each.lines[at] && seen++ == same) {
                    throw EOleError(u"Бібліотека зламалася");
                }
            };
            EXPECT_EQ(each.operate(*fixture.pos), failureOf(each));
            QStringList expected = each.lines.first(at + 1);
            if (each.type == 2) { // its events come inside the call, which is made to fail here instead
                expected.removeIf([](const QString& line) { return line.startsWith(u"status 0"); });
            }
            fixture.trace.expect(expected + QStringList{error(-1, kOle + "Бібліотека зламалася")} +
                                 endOf(each));
            EXPECT_EQ(fixture.pos->GetLastError(), -1);
        }
    }
    EXPECT_GT(calls, 300);
}

TEST(PosOperations, WithoutAnObjectTheFirstCallFails)
{
    for (const TPosCase& each : posCases()) {
        if (each.lines.value(0) == kLogInit) {
            continue;
        }
        SCOPED_TRACE(nameOf(each));
        TPosFixture fixture(each.type, false);
        each.setUp(fixture);
        const bool fails = std::any_of(each.lines.begin(), each.lines.end(), isCall);
        const bool waits = each.lines.value(0) == kWaitLoop; // does nothing without an object
        const QVariant result = each.operate(*fixture.pos);
        QStringList expected;
        for (const QString& line : each.lines) {
            if (isCall(line)) {
                break;
            }
            expected << line;
        }
        if (fails && !waits) {
            expected << error(-1, kOle);
        }
        fixture.trace.expect(expected + endOf(each));
        EXPECT_EQ(result, failureOf(each));
    }
}

TEST(PosOperations, OfAPosTypeThatIsNoneDoNothing)
{
    for (const int type : {-1, 5, 2'147'483'647}) {
        TPosFixture fixture(0);
        TBankPOS& pos = *fixture.pos;
        pos.SetPosType(type);
        EXPECT_FALSE(pos.Init());
        EXPECT_FALSE(pos.Connect());
        EXPECT_FALSE(pos.Disconnect());
        EXPECT_FALSE(pos.DeviceInfo());
        EXPECT_FALSE(pos.Test());
        EXPECT_FALSE(pos.Purchase(1, 2, 3));
        EXPECT_FALSE(pos.CashAdvance(1, 2, 3));
        EXPECT_FALSE(pos.PurchaseReturn(1, "a", "b", 3));
        EXPECT_FALSE(pos.XReport(1));
        EXPECT_FALSE(pos.ZReport(1));
        EXPECT_EQ(pos.GetMerchantID(1), "-1");
        EXPECT_FALSE(pos._WaitResponse());
        EXPECT_FALSE(pos.VarifonePrintResponse());
        fixture.trace.expect({kLogInit, kLogConnect, kLogNotConnected, kLogDisconnect, kLogDeviceInfo,
                              kLogTest, kLogPurchase, kLogCashAdvance, kLogXReport, kLogZReport, kWaitLoop});
    }
}

TEST(PosOperations, ValuesOfTheWrongKindFailLikeCalls)
{
    TPosFixture numbers(0);
    numbers.answer("GetLastResult", {u"ready"});
    EXPECT_FALSE(numbers.pos->Purchase(1, 0, 0));
    numbers.trace.expect({kLogPurchase, "call PosPurchase(&1, &0, \"0\")", kWaitLoop, "call GetLastResult()",
                          error(-1, kOle + "The value \"ready\" is no number")});

    TPosFixture texts(0);
    texts.answer("GetLastResult", {0});
    texts.answer("getRRN", {TValue(platform::automation::TObjectPtr(texts.library))});
    EXPECT_FALSE(texts.pos->Purchase(1, 0, 0));
    EXPECT_EQ(texts.trace.take().last(), error(-1, kOle + "The value of an object is no text"));

    TPosFixture booleans(4);
    booleans.answer("pos_open", {u"perhaps"});
    EXPECT_FALSE(booleans.pos->Connect());
    booleans.trace.expect({kLogConnect, "call pos_open(\"COM7\")",
                           error(-1, kOle + "The value \"perhaps\" is no boolean"), kLogNotConnected});
}

TEST(PosOperations, ResultsInTextsAreNumbersToo)
{
    TPosFixture fixture(0);
    fixture.answer("GetLastResult", {u"2", 2.0, u"0", std::int64_t{0}});
    fixture.answer("getRRN", {std::int64_t{123'456'789'012}});
    fixture.answer("InvoiceNum", {true});
    EXPECT_TRUE(fixture.pos->Purchase(1, 0, 0));
    EXPECT_EQ(fixture.pos->RRN(), "123456789012");
    EXPECT_EQ(fixture.pos->TransactionID(), "True");
}

TEST(PosOperations, AMissingConstantIsAFailingCall)
{
    TPosFixture fixture(4);
    fixture.library->Constants.erase(u"ACTION_PAYMENT");
    EXPECT_FALSE(fixture.pos->Purchase(5, 0, 0));
    fixture.trace.expect({kLogPurchase, "call pos_set(POS_AMOUNT, 5)", "call pos_set(POS_CURRENCY, 980)",
                          error(-1, kOle + "Unknown name: ACTION_PAYMENT")});
}

TEST(PosOperations, AnEndlessListOfFieldsEnds)
{
    TPosFixture fixture(4);
    fixture.answer("pos_get_first", {{true, {TValue(u"n"), TValue(u"v")}}});
    fixture.answer("pos_get_next", {{true, {TValue(u"n"), TValue(u"v")}}});
    EXPECT_TRUE(fixture.pos->VarifonePrintResponse());
    EXPECT_EQ(fixture.trace.countOf("log param =n Val = v"), 10'000);
}

TEST(PosOperations, CallsMayTakeAsLongAsTheirOwnLimit)
{
    using std::chrono::milliseconds;
    TPosFixture four(4);
    four.answer("pos_send", {true});
    four.OnCall = [&](const QString& line) {
        const milliseconds limit = four.library->lastLimit();
        EXPECT_EQ(limit, line.startsWith(u"call pos_receive(30000)")  ? milliseconds(30'000)
                         : line.startsWith(u"call pos_receive(1000)") ? milliseconds(1'000)
                                                                      : milliseconds(180'000))
            << line.toStdString();
    };
    four.answer("pos_receive", {rConfirm});
    four.pos->Purchase(1, 0, 1);
    TPosFixture two(2);
    two.pos->_WaitResponse();
    EXPECT_EQ(two.library->lastLimit(), milliseconds(180'000));
}

} // namespace
