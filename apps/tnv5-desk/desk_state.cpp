#include "apps/tnv5-desk/desk_state.h"

#include "tnv5/common/messages.h"

#include <QJsonArray>
#include <algorithm>

namespace tnv5::desk {

namespace {

QString text(const QJsonObject& object, QStringView name)
{
    return object.value(name).toString();
}

std::optional<TWay> toWay(const QString& word)
{
    if (word == QLatin1String("in")) {
        return TWay::In;
    }
    if (word == QLatin1String("out")) {
        return TWay::Out;
    }
    return word == QLatin1String("inner") ? std::optional(TWay::Inner) : std::nullopt;
}

template <class Make>
auto each(const QJsonObject& object, QStringView name, Make make)
{
    QList<decltype(make(QJsonObject()))> things;
    for (const QJsonValue value : object.value(name).toArray()) {
        things.append(make(value.toObject()));
    }
    return things;
}

TGateState toGate(const QJsonObject& gate)
{
    TGateState state{
        text(gate, u"address"), text(gate, u"zone"), toWay(text(gate, u"direction")).value_or(TWay::Inner),
        text(gate, u"line"),    std::nullopt,        gate.value(u"busy").toBool(),
        text(gate, u"holder")};
    if (gate.value(u"answering").isBool()) {
        state.answering = gate.value(u"answering").toBool();
    }
    return state;
}

TScaleState toScale(const QJsonObject& scale)
{
    TScaleState state{text(scale, u"name"), std::nullopt, scale.value(u"steady").toBool()};
    if (scale.value(u"grams").isDouble()) {
        state.grams = scale.value(u"grams").toInt();
    }
    return state;
}

} // namespace

TClubState toState(const QJsonObject& object)
{
    TClubState state;
    state.club = text(object, u"club");
    state.version = text(object, u"version");
    state.lines = each(object, u"lines", [](const QJsonObject& line) {
        return TLineState{text(line, u"name"), text(line, u"port"), line.value(u"open").toBool(),
                          text(line, u"why")};
    });
    state.gates = each(object, u"gates", toGate);
    state.boards = each(object, u"boards", [](const QJsonObject& board) {
        return TBoardState{text(board, u"address"), text(board, u"line"), board.value(u"answering").toBool(),
                           text(board, u"heard")};
    });
    state.lamps = each(object, u"lamps", [](const QJsonObject& lamp) {
        return TLampState{text(lamp, u"name"),
                          text(lamp, u"board"),
                          text(lamp, u"relay"),
                          lamp.value(u"on").toBool(),
                          lamp.value(u"answers").toBool(),
                          text(lamp, u"holder"),
                          std::max<qint64>(lamp.value(u"secondsLeft").toInteger(), 0)};
    });
    state.scales = each(object, u"scales", toScale);
    state.terminals = each(object, u"terminals", [](const QJsonObject& terminal) {
        return TTerminalState{text(terminal, u"name"), terminal.value(u"cents").toInteger(),
                              text(terminal, u"stage")};
    });
    if (object.value(u"inside").isDouble()) {
        state.inside = object.value(u"inside").toInteger();
    }
    state.journalWaiting = object.value(u"journalWaiting").toInteger();
    for (const QJsonValue trouble : object.value(u"troubles").toArray()) {
        state.troubles << trouble.toString();
    }
    return state;
}

bool TPassNews::byButton() const
{
    return card == common::kCardButton;
}

bool TPassNews::byHand() const
{
    return card == common::kCardManual;
}

bool TPassNews::sameAs(const TPassNews& other) const
{
    return gate == other.gate && card == other.card && began == other.began;
}

TPassNews toPass(const QJsonObject& object)
{
    TPassNews pass;
    pass.began = text(object, u"began");
    pass.ended = text(object, u"ended");
    pass.card = text(object, u"card");
    pass.member = object.value(u"member").toInteger();
    pass.name = text(object, u"name");
    pass.balance = object.value(u"balance").toInteger();
    pass.gate = text(object, u"gate");
    pass.zone = text(object, u"zone");
    pass.way = toWay(text(object, u"direction"));
    pass.opened = object.value(u"opened").toBool();
    pass.reason = text(object, u"reason");
    pass.ending = text(object, u"ending");
    pass.who = text(object, u"who");
    pass.note = text(object, u"note");
    pass.picture = QByteArray::fromBase64(text(object, u"picture").toLatin1());
    return pass;
}

qint64 secondsLeft(qint64 secondsThen, qint64 elapsedMs)
{
    return std::max<qint64>(secondsThen - elapsedMs / 1'000, 0);
}

QString durationText(qint64 seconds)
{
    const auto two = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QChar(u'0')); };
    const qint64 minutes = seconds / 60;
    return minutes < 60
               ? QStringLiteral("%1:%2").arg(minutes).arg(two(seconds % 60))
               : QStringLiteral("%1:%2:%3").arg(minutes / 60).arg(two(minutes % 60), two(seconds % 60));
}

QString amountText(qint64 cents)
{
    const quint64 amount = cents < 0 ? 0 - static_cast<quint64>(cents) : static_cast<quint64>(cents);
    return QStringLiteral("%1%2.%3")
        .arg(cents < 0 ? QStringLiteral("-") : QString())
        .arg(amount / 100)
        .arg(amount % 100, 2, 10, QChar(u'0'));
}

} // namespace tnv5::desk
