// Automation objects on a real bus, in a process of their own; and bank terminals behind them.

#include "sim/pos_bus.h"
#include "support/text_printers.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/platform/automation/dbus_provider.h"
#include "tnv5/platform/automation/dbus_value.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

using namespace platform::automation;
using std::chrono::milliseconds;

/// A program on the bus, which says so when it is ready.
class TOnBus
{
public:
    TOnBus(const QString& program, const QStringList& arguments)
    {
        sim::endWithUs(FProgram);
        FProgram.start(program, arguments);
        EXPECT_TRUE(FProgram.waitForReadyRead(60'000)) << FProgram.readAllStandardError().toStdString();
    }
    ~TOnBus() { end(); }
    Q_DISABLE_COPY_MOVE(TOnBus)

    void end()
    {
        FProgram.kill();
        FProgram.waitForFinished();
    }
    /// Waits until it has ended by itself.
    bool ended() { return FProgram.state() == QProcess::NotRunning || FProgram.waitForFinished(60'000); }

private:
    QProcess FProgram;
};

class BusTest : public ::testing::Test
{
protected:
    BusTest() { setAutomationBus(bus.address().toStdString()); }
    ~BusTest() override { setAutomationBus({}); }

    std::unique_ptr<TOnBus> start() const
    {
        return std::make_unique<TOnBus>(QStringLiteral(TNV5_BUS_OBJECT), QStringList{bus.address()});
    }

    template <class Call>
    static std::u16string refusal(const Call& call)
    {
        try {
            call();
        } catch (const EOleError& error) {
            return error.message();
        }
        return u"none";
    }

    static TValue call(const TObjectPtr& object, std::u16string_view name, TArguments arguments = {})
    {
        return object->call(name, arguments, kLongestCall);
    }

    static void listen(const TObjectPtr& object, std::u16string& heard)
    {
        object->setEventHandler([&heard](std::u16string_view name, const TArguments& arguments) {
            heard +=
                std::u16string(name) + arguments.at(0).value.toText() + arguments.at(1).value.toText() + u' ';
        });
    }

    sim::TPrivateBus bus;
};

TEST_F(BusTest, CallsWithResultsAndArgumentsByReference)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    EXPECT_EQ(call(object, u"Add", {2, 3}), TValue(5));
    EXPECT_EQ(call(object, u"Nothing"), TValue());
    TArguments arguments{byRef(u"a"), u"kept", byRef(true)};
    EXPECT_EQ(object->call(u"Swap", arguments, kLongestCall), TValue(u"swapped"));
    EXPECT_EQ(arguments[0].value, TValue(u"kept"));
    EXPECT_EQ(arguments[1].value, TValue(u"kept"));
    EXPECT_EQ(arguments[2].value, TValue(u"a"));
    TArguments one{byRef(1)}; // fewer values than arguments leave these as they are
    EXPECT_EQ(object->call(u"Echo", one, kLongestCall), TValue(1));
    EXPECT_EQ(one[0].value, TValue(1));
}

TEST_F(BusTest, ValuesKeepTheirTypes)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    for (const TValue& value : {TValue(true), TValue(-7), TValue(std::int64_t{1} << 40), TValue(2.5),
                                TValue(u"Оплата \U0001F4B3"), TValue(u"")}) {
        EXPECT_EQ(call(object, u"Echo", {value}), value);
    }
    EXPECT_EQ(call(object, u"Echo", {TValue()}), TValue(u"")); // there is nothing emptier
    TArguments many{byRef(1), byRef(1), byRef(1), byRef(1), byRef(1), byRef(1), byRef(1)};
    EXPECT_EQ(object->call(u"Types", many, kLongestCall), TValue(std::int64_t{5}));
    EXPECT_EQ(many[0].value, TValue(7));
    EXPECT_EQ(many[1].value, TValue(-3));
    EXPECT_EQ(many[2].value, TValue(9));
    EXPECT_EQ(many[3].value, TValue(9223372036854775808.0));
    EXPECT_EQ(many[4].value, TValue(true));
    EXPECT_EQ(many[5].value, TValue(u"/a/b"));
    EXPECT_EQ(many[6].value, TValue(std::int64_t{4'000'000'000}));
    EXPECT_EQ(refusal([&] { call(object, u"Odd"); }), u"a value of the type QStringList is not understood");
    EXPECT_EQ(refusal([&] { call(object, u"Echo", {object}); }), u"an object cannot be sent over the bus");
}

TEST_F(BusTest, PropertiesAndConstants)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    EXPECT_EQ(object->constant(u"RESP_CONFIRM"), TValue(3));
    object->put(u"Speed", 9'600);
    EXPECT_EQ(object->get(u"Speed"), TValue(9'600));
    EXPECT_EQ(call(object, u"Version"), TValue(u"1.0")); // a call without arguments may be a property
    EXPECT_EQ(refusal([&] { object->get(u"speed"); }), u"no speed");
    EXPECT_NE(refusal([&] { call(object, u"NoSuchMethod", {1}); }), u"none");
    EXPECT_NE(refusal([&] { call(object, u"no such name!"); }), u"none");
}

TEST_F(BusTest, FailuresCarryTheLibrarysText)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    EXPECT_EQ(refusal([&] { call(object, u"Fail"); }), u"немає паперу");
    EXPECT_EQ(refusal([&] { call(object, u"FailSilently"); }), u"Test.Trouble");
}

TEST_F(BusTest, SignalsAreEventsAlsoDuringACall)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    std::u16string heard;
    listen(object, heard);
    call(object, u"Tell");
    EXPECT_EQ(heard, u"Progress1text Progress2text ");
    object->setEventHandler({});
    call(object, u"Tell");
    call(object, u"Slowly", {50});
    EXPECT_EQ(heard, u"Progress1text Progress2text ");
}

TEST_F(BusTest, SignalsAreEventsBeforeTheCallReturnsAlsoWhereNoLoopRuns)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    std::u16string heard;
    listen(object, heard);
    QTimer::singleShot(0, [&] {
        QCoreApplication::exit(); // no loop runs any more, as when the answer is there before one could
        call(object, u"Tell");
        EXPECT_EQ(heard, u"Progress1text Progress2text ");
    });
    QCoreApplication::exec();
    EXPECT_EQ(heard, u"Progress1text Progress2text ");
}

TEST_F(BusTest, TheMessageLoopRunsDuringACall)
{
    const auto process = start();
    TObjectPtr object = CreateOleObject(u"Test.Object");
    TAutomationObject& library = *object;
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(10);
    TArguments arguments{300};
    EXPECT_EQ(library.call(u"Slowly", arguments, kLongestCall), TValue(1));
    EXPECT_GT(ticks, 0);
}

TEST_F(BusTest, ACallEndsAfterItsLimit)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    TArguments arguments{60'000};
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(refusal([&] { object->call(u"Slowly", arguments, milliseconds(1'000)); }),
              u"Test.Object: no answer within 1 s");
    EXPECT_GE(elapsed.elapsed(), 5'000); // the limit and the grace, as coarsely as Qt waits
}

TEST_F(BusTest, AProcessThatEndsFailsTheCallAtOnce)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    EXPECT_EQ(refusal([&] { call(object, u"Die"); }), u"Test.Object: the process behind it has ended");
    EXPECT_EQ(refusal([&] {
                  call(object, u"Add", {1, 2});
              }),
              u"Test.Object: the process behind it has ended");
}

TEST_F(BusTest, AnotherProcessUnderTheNameIsNotSpokenTo)
{
    auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    process->end();
    process = start();
    EXPECT_EQ(refusal([&] {
                  call(object, u"Add", {1, 2});
              }),
              u"Test.Object: the process behind it has ended");
    EXPECT_EQ(call(CreateOleObject(u"Test.Object"), u"Add", {1, 2}), TValue(3));
}

TEST_F(BusTest, NamesThatNobodyHasCannotBeCreated)
{
    EXPECT_EQ(refusal([] { CreateOleObject(u"No.Body"); }),
              u"\"No.Body\": no class of this process, and nobody on the bus");
    EXPECT_EQ(refusal([] { CreateOleObject(u"not a name. at all"); }),
              u"\"not a name. at all\": no class of this process, and nobody on the bus");
    bus.stop();
    EXPECT_EQ(refusal([] { CreateOleObject(u"No.Body"); }),
              u"\"No.Body\": no class of this process, and there is no bus");
}

TEST_F(BusTest, ABusThatEndsFailsTheCall)
{
    const auto process = start();
    const TObjectPtr object = CreateOleObject(u"Test.Object");
    bus.stop();
    EXPECT_EQ(refusal([&] { call(object, u"Add", {1, 2}); }), u"Test.Object: the bus is gone");
}

TEST(BusNames, AreFormedFromProgIds)
{
    EXPECT_EQ(busNameOf(u"CardPay.PosApi"), "CardPay.PosApi");
    EXPECT_EQ(busNameOf(u"TAxECRClass98"), "tnv5.TAxECRClass98");
    EXPECT_EQ(pathOf("CardPay.PosApi"), "/CardPay/PosApi");
    EXPECT_EQ(pathOf("A.B.C"), "/A/B/C");
}

/// A payment component whose terminal is a process of its own.
class TerminalTest : public BusTest
{
protected:
    std::unique_ptr<TOnBus> terminal(int type, const QString& end) const
    {
        return std::make_unique<TOnBus>(QStringLiteral(TNV5_PROGRAM),
                                        QStringList{"terminal", "--bus", bus.address(), "--type",
                                                    QString::number(type), "--end", end, "--step", "20"});
    }

    std::unique_ptr<bank::TBankPOS> component(int type)
    {
        auto pos = std::make_unique<bank::TBankPOS>();
        pos->SetPosType(type);
        pos->SetOnLog([this](auto*, const QString& text) { heard << "log " + text; });
        pos->SetOnStatus([this](auto*, int, const QString& text) { heard << "status " + text; });
        pos->SetOnError(
            [this](auto*, int code, const QString& text) { heard << QString("error %1 ").arg(code) + text; });
        EXPECT_TRUE(pos->Init()) << heard.join('\n').toStdString();
        EXPECT_TRUE(pos->Connect()) << heard.join('\n').toStdString();
        heard.clear();
        return pos;
    }

    QStringList heard;
};

TEST_F(TerminalTest, EachLibraryPaysReturnsAndReports)
{
    for (int type = 0; type < 5; ++type) {
        SCOPED_TRACE(type);
        const auto process = terminal(type, "approve");
        const auto pos = component(type);
        EXPECT_TRUE(pos->Test()) << heard.join('\n').toStdString();
        EXPECT_TRUE(pos->Purchase(1'250, 0, 1)) << heard.join('\n').toStdString();
        EXPECT_EQ(pos->RRN(), "100001");
        EXPECT_EQ(pos->TransactionID(), "1");
        EXPECT_TRUE(pos->Purchase(250, 0, 1));
        EXPECT_EQ(pos->DeviceInfo(), type != 0);
        EXPECT_EQ(pos->PurchaseReturn(250, pos->RRN(), pos->AuthID(), 1), type != 0 && type != 4);
        EXPECT_EQ(pos->CashAdvance(100, 0, 1), type == 1);
        EXPECT_TRUE(pos->XReport(1)) << heard.join('\n').toStdString();
        if (type == 1 || type == 3 || type == 4) {
            EXPECT_EQ(pos->TotalsDebitNum(), "2");
            EXPECT_EQ(pos->TotalsDebitAmt(), "1500");
            EXPECT_EQ(pos->TotalsCancelledNum(), type == 4 ? "0" : "1");
            EXPECT_EQ(pos->TotalsCancelledAmt(), type == 4 ? "0" : "250");
            EXPECT_EQ(pos->TotalsCreditAmt(), type == 1 ? "100" : "0");
        }
        EXPECT_TRUE(pos->ZReport(1));
        EXPECT_TRUE(pos->XReport(1));
        if (type == 1 || type == 3 || type == 4) {
            EXPECT_EQ(pos->TotalsDebitNum(), "0");
        }
        EXPECT_EQ(pos->GetMerchantID(1), type == 4 ? "M0001" : "-1");
        EXPECT_EQ(pos->GetMerchantID(2), "-1");
        EXPECT_TRUE(pos->Disconnect());
        EXPECT_EQ(heard.filter("error").join('\n').toStdString(), "");
        EXPECT_EQ(heard.filter("status").isEmpty(), type == 3) << "the pad says nothing meanwhile";
    }
}

TEST_F(TerminalTest, RefusalsAreTold)
{
    const std::pair<const char*, int> ends[] = {{"decline", 51}, {"timeout", 9}, {"break", 18}};
    for (const auto& [end, code] : ends) {
        for (int type = 0; type < 5; ++type) {
            SCOPED_TRACE(std::to_string(type) + ' ' + end);
            const auto process = terminal(type, end);
            const auto pos = component(type);
            EXPECT_FALSE(pos->Purchase(1'250, 0, 1));
            EXPECT_EQ(heard.filter("error").size(), 1) << heard.join('\n').toStdString();
            EXPECT_TRUE(pos->XReport(1)); // it works on
            if (type != 4) {
                EXPECT_EQ(heard.filter("error").size(), 1);
                EXPECT_TRUE(heard.filter("error")[0].startsWith(QString("error %1 ").arg(code)));
            }
        }
    }
}

TEST_F(TerminalTest, ACrashInMidPaymentEndsItWithAClearError)
{
    const QString names[] = {"ECRCommX.ECRLibSgn", "ECRCommX.BPOS1Lib", "tnv5.TAxECRClass98",
                             "BluePad50v2.Borica", "CardPay.PosApi"};
    for (int type = 0; type < 5; ++type) {
        SCOPED_TRACE(type);
        const auto process = terminal(type, "crash");
        const auto pos = component(type);
        EXPECT_FALSE(pos->Purchase(1'250, 0, 1));
        EXPECT_EQ(heard.last(),
                  "error -1 Помилка OLE об'єкту. " + names[type] + ": the process behind it has ended");
        EXPECT_EQ(pos->GetLastError(), -1);
        EXPECT_EQ(pos->RRN(), "");
        EXPECT_TRUE(process->ended());
        const auto again = terminal(type, "approve"); // what comes in its place did not begin the payment
        EXPECT_FALSE(pos->Purchase(1'250, 0, 1));
    }
}

TEST_F(TerminalTest, AComponentThatIsDestroyedInMidPaymentLeavesTheTerminalAlone)
{
    for (int type = 0; type < 5; ++type) {
        SCOPED_TRACE(type);
        const auto process = terminal(type, "approve");
        auto pos = component(type);
        QTimer::singleShot(15, [&] { pos.reset(); });
        EXPECT_FALSE(pos->Purchase(1'250, 0, 1));
        EXPECT_FALSE(pos);
        EXPECT_EQ(heard.last(), "log Заверщення роботи");
    }
}

} // namespace
} // namespace tnv5::integration
