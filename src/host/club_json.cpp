#include "tnv5/host/club_json.h"

#include <cmath>

namespace tnv5::host {

QString isoText(platform::TDateTime time)
{
    return time == 0 ? QString() : isoTime(std::llround(time * double(platform::kMsPerDay)));
}

QJsonObject passJson(const TPass& pass, const std::optional<TGate>& gate)
{
    const std::optional<TDirection> direction = gate ? std::optional(gate->direction) : pass.direction;
    return {{"id", pass.id},
            {"began", isoText(pass.began)},
            {"ended", isoText(pass.ended)},
            {"card", pass.card},
            {"member", pass.member},
            {"name", pass.name},
            {"balance", pass.balance},
            {"gate", pass.gate},
            {"zone", gate ? gate->zone : QString()},
            {"direction", direction ? toText(*direction) : QString()},
            {"opened", pass.opened()},
            {"reason", toText(pass.refusal)},
            {"ending", toText(pass.ending)},
            {"who", pass.who},
            {"note", pass.note}};
}

QJsonObject passEvent(const QJsonObject& pass)
{
    return {{"event", "pass"}, {"pass", pass}};
}

QJsonObject lineEvent(const TLogLine& line)
{
    const QString source = line.source.isEmpty() ? QString() : line.source + QStringLiteral(": ");
    return {{"event", "line"},
            {"level", toText(line.level)},
            {"time", isoTime(line.timeMs)},
            {"text", source + line.text}};
}

QJsonObject saleJson(const TSale& sale)
{
    return {{"event", "sale"},
            {"sale", QJsonObject{{"id", sale.id},
                                 {"sold", isoText(sale.sold)},
                                 {"card", sale.card},
                                 {"member", sale.member},
                                 {"name", sale.name},
                                 {"product", sale.product},
                                 {"centsPerKg", sale.centsPerKg},
                                 {"grams", sale.grams},
                                 {"cents", sale.cents}}}};
}

QJsonObject paymentJson(const TPayment& payment)
{
    return {{"event", "payment"},
            {"payment", QJsonObject{{"id", payment.id},
                                    {"began", isoText(payment.began)},
                                    {"ended", isoText(payment.ended)},
                                    {"cents", payment.cents},
                                    {"discount", payment.discount},
                                    {"card", payment.card},
                                    {"cardType", payment.cardType},
                                    {"answer", payment.answer},
                                    {"outcome", toText(payment.outcome)},
                                    {"reason", payment.reason}}}};
}

QJsonObject lampTimeJson(const TLampTime& time)
{
    return {{"event", "lamp_time"},
            {"lamp_time", QJsonObject{{"id", time.id},
                                      {"ordered", isoText(time.ordered)},
                                      {"lamp", time.lamp},
                                      {"card", time.card},
                                      {"member", time.member},
                                      {"name", time.name},
                                      {"minutes", time.minutes},
                                      {"cents", time.cents},
                                      {"began", isoText(time.began)},
                                      {"until", isoText(time.until)},
                                      {"ended", isoText(time.ended)},
                                      {"ending", toText(time.ending)}}}};
}

} // namespace tnv5::host
