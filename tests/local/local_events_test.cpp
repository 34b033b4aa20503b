#include "local_fixture.h"

#include "tnv5/host/local/local_events.h"
#include "tnv5/testing/manual_clock.h"

using namespace tnv5;
using namespace tnv5::host;
using tests::text;

namespace {

class LocalEvents : public ::testing::Test
{
protected:
    LocalEvents()
    {
        qputenv("TZ", "UTC-2"); // two hours ahead
        tzset();
    }
    ~LocalEvents() override
    {
        qunsetenv("TZ");
        tzset();
    }

    const platform::TDateTime noon = toDateTime(QStringLiteral("2026-01-05 12:00:00.250"));
};

TEST_F(LocalEvents, TimesHaveTheirZone)
{
    EXPECT_EQ(isoTime(noon).toStdString(), "2026-01-05T12:00:00.250+02:00");
    EXPECT_EQ(isoTime(0).toStdString(), "");
}

TEST_F(LocalEvents, APassUnderWay)
{
    TPass pass;
    pass.id = 7;
    pass.began = noon;
    pass.card = QStringLiteral("17");
    pass.member = 3;
    pass.name = QStringLiteral("Anna");
    pass.balance = -5;
    pass.gate = QStringLiteral("01A");
    pass.direction = TDirection::In;
    EXPECT_EQ(
        text(passEvent(pass, QStringLiteral("hall"))),
        R"({"event":"pass","pass":{"balance":-5,"began":"2026-01-05T12:00:00.250+02:00","card":"17",)"
        R"("direction":"in","ended":"","ending":"","gate":"01A","id":7,"member":3,"name":"Anna","note":"",)"
        R"("opened":true,"reason":"","who":"","zone":"hall"}})");
}

TEST_F(LocalEvents, APassThatWasRefusedAndOneByHand)
{
    TPass pass;
    pass.refusal = TRefusal::Expired;
    QJsonObject object = toJson(pass, {});
    EXPECT_FALSE(object.value(u"opened").toBool(true));
    EXPECT_EQ(object.value(u"reason").toString(), QStringLiteral("expired"));
    EXPECT_EQ(object.value(u"direction").toString(), QString());
    pass.refusal = TRefusal::None;
    pass.ending = TEnding::TimedOut;
    pass.who = QStringLiteral("Anna");
    pass.note = QStringLiteral("a pram");
    object = toJson(pass, {});
    EXPECT_EQ(object.value(u"ending").toString(), toText(TEnding::TimedOut));
    EXPECT_EQ(object.value(u"who").toString() + object.value(u"note").toString(),
              QStringLiteral("Annaa pram"));
}

TEST_F(LocalEvents, RowsOfTheBooks)
{
    TSale sale;
    sale.id = 1;
    sale.sold = noon;
    sale.product = QStringLiteral("apples");
    sale.grams = 450;
    sale.centsPerKg = 320;
    sale.cents = 144;
    EXPECT_EQ(
        text(saleEvent(sale)),
        R"({"event":"sale","sale":{"card":"","cents":144,"centsPerKg":320,"grams":450,"id":1,"member":0,)"
        R"("name":"","product":"apples","sold":"2026-01-05T12:00:00.250+02:00"}})");
    TPayment payment;
    payment.cents = 450;
    payment.outcome = TOutcome::Approved;
    EXPECT_EQ(text(paymentEvent(payment)),
              R"({"event":"payment","payment":{"answer":"","began":"","card":"","cardType":"","cents":450,)"
              R"("discount":0,"ended":"","id":0,"outcome":"approved","reason":""}})");
    TLampTime time;
    time.lamp = QStringLiteral("Sun 1");
    time.until = noon;
    EXPECT_EQ(
        text(lampTimeEvent(time)),
        R"({"event":"lamp_time","lamp_time":{"began":"","card":"","cents":0,"ended":"","ending":"","id":0,)"
        R"("lamp":"Sun 1","member":0,"minutes":0,"name":"","ordered":"",)"
        R"("until":"2026-01-05T12:00:00.250+02:00"}})");
}

TEST_F(LocalEvents, ALineOfTheLog)
{
    EXPECT_EQ(
        text(lineEvent(TLevel::Warning, noon, QStringLiteral("no paper"))),
        R"({"event":"line","level":"warning","text":"no paper","time":"2026-01-05T12:00:00.250+02:00"})");
    EXPECT_EQ(lineEvent(TLevel::Info, 0, {}).value(u"level").toString(), QStringLiteral("info"));
    EXPECT_EQ(lineEvent(TLevel::Error, 0, {}).value(u"level").toString(), QStringLiteral("error"));
}

} // namespace
