#include "tnv5/host/local/local_events.h"

#include <QDateTime>
#include <cmath>

namespace tnv5::host {

namespace {

QJsonObject event(const char* name, const char* member, const QJsonObject& row)
{
    return {{QStringLiteral("event"), QLatin1String(name)}, {QLatin1String(member), row}};
}

} // namespace

QString isoTime(platform::TDateTime time)
{
    if (time == 0) {
        return {};
    }
    const auto ms = static_cast<qint64>(std::llround(time * double(platform::kMsPerDay)));
    const QDateTime moment(QDate(1899, 12, 30).addDays(ms / platform::kMsPerDay),
                           QTime::fromMSecsSinceStartOfDay(int(ms % platform::kMsPerDay)));
    return moment.toOffsetFromUtc(moment.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

QJsonObject toJson(const TPass& pass, const QString& zone)
{
    return {{QStringLiteral("id"), pass.id},
            {QStringLiteral("began"), isoTime(pass.began)},
            {QStringLiteral("ended"), isoTime(pass.ended)},
            {QStringLiteral("card"), pass.card},
            {QStringLiteral("member"), pass.member},
            {QStringLiteral("name"), pass.name},
            {QStringLiteral("balance"), pass.balance},
            {QStringLiteral("gate"), pass.gate},
            {QStringLiteral("zone"), zone},
            {QStringLiteral("direction"), pass.direction ? toText(*pass.direction) : QString()},
            {QStringLiteral("opened"), pass.opened()},
            {QStringLiteral("reason"), pass.opened() ? QString() : toText(pass.refusal)},
            {QStringLiteral("ending"), pass.ending == TEnding::None ? QString() : toText(pass.ending)},
            {QStringLiteral("who"), pass.who},
            {QStringLiteral("note"), pass.note}};
}

QJsonObject toJson(const TSale& sale)
{
    return {{QStringLiteral("id"), sale.id},       {QStringLiteral("sold"), isoTime(sale.sold)},
            {QStringLiteral("card"), sale.card},   {QStringLiteral("member"), sale.member},
            {QStringLiteral("name"), sale.name},   {QStringLiteral("product"), sale.product},
            {QStringLiteral("grams"), sale.grams}, {QStringLiteral("centsPerKg"), sale.centsPerKg},
            {QStringLiteral("cents"), sale.cents}};
}

QJsonObject toJson(const TPayment& payment)
{
    return {{QStringLiteral("id"), payment.id},
            {QStringLiteral("began"), isoTime(payment.began)},
            {QStringLiteral("ended"), isoTime(payment.ended)},
            {QStringLiteral("cents"), payment.cents},
            {QStringLiteral("discount"), payment.discount},
            {QStringLiteral("card"), payment.card},
            {QStringLiteral("cardType"), payment.cardType},
            {QStringLiteral("answer"), payment.answer},
            {QStringLiteral("outcome"), toText(payment.outcome)},
            {QStringLiteral("reason"), payment.reason}};
}

QJsonObject toJson(const TLampTime& time)
{
    return {{QStringLiteral("id"), time.id},
            {QStringLiteral("ordered"), isoTime(time.ordered)},
            {QStringLiteral("began"), isoTime(time.began)},
            {QStringLiteral("until"), isoTime(time.until)},
            {QStringLiteral("ended"), isoTime(time.ended)},
            {QStringLiteral("lamp"), time.lamp},
            {QStringLiteral("card"), time.card},
            {QStringLiteral("member"), time.member},
            {QStringLiteral("name"), time.name},
            {QStringLiteral("minutes"), time.minutes},
            {QStringLiteral("cents"), time.cents},
            {QStringLiteral("ending"), time.open() ? QString() : toText(time.ending)}};
}

QJsonObject passEvent(const TPass& pass, const QString& zone)
{
    return event("pass", "pass", toJson(pass, zone));
}

QJsonObject saleEvent(const TSale& sale)
{
    return event("sale", "sale", toJson(sale));
}

QJsonObject paymentEvent(const TPayment& payment)
{
    return event("payment", "payment", toJson(payment));
}

QJsonObject lampTimeEvent(const TLampTime& time)
{
    return event("lamp_time", "lamp_time", toJson(time));
}

QJsonObject lineEvent(TLevel level, platform::TDateTime time, const QString& text)
{
    return {{QStringLiteral("event"), QStringLiteral("line")},
            {QStringLiteral("level"), toText(level)},
            {QStringLiteral("time"), isoTime(time)},
            {QStringLiteral("text"), text}};
}

} // namespace tnv5::host
