#include "apps/tnv5-desk/desk_model.h"

#include "apps/tnv5-desk/words.h"

#include <QDateTime>
#include <algorithm>

namespace tnv5::desk {

TDeskModel::TDeskModel(host::TLocalClient::TFindPath findSocket, QObject* parent)
    : QObject(parent), FHost(std::move(findSocket))
{
    FClock.start();
    FHost.Pictures = true;
    FHost.OnConnected = [this] { note(TLogLevel::Info, tr("The desk is connected to the host.")); };
    FHost.OnLost = [this](const QString& why) { onLost(why); };
    FHost.OnEvent = [this](const QJsonObject& event) { onEvent(event); };
}

TPairState TDeskModel::stateOf(const TGatePair& pair) const
{
    return FLive ? desk::stateOf(pair, FState, FRefusals, FClock.elapsed()) : unconnected();
}

std::optional<TGateState> TDeskModel::gate(const QString& address) const
{
    const auto found = std::find_if(FState.gates.begin(), FState.gates.end(),
                                    [&address](const TGateState& each) { return each.address == address; });
    return found == FState.gates.end() ? std::nullopt : std::optional(*found);
}

void TDeskModel::open(const QString& gate, const QString& who, const QString& reason)
{
    FHost.ask({{QStringLiteral("do"), QStringLiteral("open")},
               {QStringLiteral("gate"), gate},
               {QStringLiteral("who"), who},
               {QStringLiteral("reason"), reason}},
              [this, gate](const QJsonObject& answer) { onOpened(gate, answer); });
}

void TDeskModel::onOpened(const QString& gate, const QJsonObject& answer)
{
    if (answer.value(u"ok").toBool()) {
        Q_EMIT opened(TOpened::Given, tr("Gate %1: the command to open was given.").arg(gate));
        return;
    }
    const bool unknown = answer.value(u"unknown").toBool();
    const QString error = TWords::connection(answer.value(u"error").toString());
    const QString text =
        unknown ? tr("Gate %1: not known whether it was opened, the connection was lost.").arg(gate)
                : tr("Gate %1 was not opened: %2").arg(gate, error.isEmpty() ? tr("no reason given") : error);
    note(TLogLevel::Error, text);
    Q_EMIT opened(unknown ? TOpened::Unknown : TOpened::Refused, text);
}

void TDeskModel::onEvent(const QJsonObject& event)
{
    const QString name = event.value(u"event").toString();
    if (name == QLatin1String("state")) {
        onState(event.value(u"state").toObject());
    } else if (name == QLatin1String("pass")) {
        onPass(toPass(event.value(u"pass").toObject()));
    } else if (name == QLatin1String("line")) {
        FLog.add({toLogLevel(event.value(u"level").toString()), event.value(u"time").toString(),
                  event.value(u"text").toString()});
    }
}

void TDeskModel::onState(const QJsonObject& object)
{
    FState = toState(object);
    FStateAge.start();
    if (!std::exchange(FLive, true)) {
        FWhyNot.clear();
        Q_EMIT liveChanged();
    }
    const QList<TGatePair> pairs = pairsOf(FState.gates);
    if (pairs != FPairs) {
        FPairs = pairs;
        Q_EMIT pairsChanged();
    }
    Q_EMIT stateChanged();
}

void TDeskModel::onPass(TPassNews pass)
{
    if (!pass.opened && gate(pass.gate)) {
        FRefusals[pass.gate] = {TWords::reason(pass.reason), FClock.elapsed()};
    } else if (pass.underWay()) { // the end of one may come behind a newer refusal
        FRefusals.remove(pass.gate);
    }
    const auto known = std::find_if(FPasses.begin(), FPasses.end(),
                                    [&pass](const TPassNews& each) { return each.sameAs(pass); });
    if (known != FPasses.end()) {
        pass.picture = pass.picture.isEmpty() ? known->picture : pass.picture;
        *known = std::move(pass);
    } else {
        FPasses.push_front(std::move(pass));
        if (FPasses.size() > kPasses) {
            FPasses.pop_back();
        }
        if (FPasses.size() > kPictures) {
            FPasses[kPictures].picture.clear();
        }
    }
    Q_EMIT passesChanged();
    Q_EMIT stateChanged(); // what the panel shows of the gate
}

// Nothing of before is shown as if it were so now.
void TDeskModel::onLost(const QString& why)
{
    FWhyNot = TWords::connection(why);
    note(TLogLevel::Error, FWhyNot);
    FLive = false;
    FState = {};
    FStateAge.invalidate();
    FRefusals.clear();
    for (TPassNews& pass : FPasses) {
        if (pass.underWay()) {
            pass.ending = QLatin1String(kUnknownEnding);
        }
    }
    Q_EMIT liveChanged();
    Q_EMIT passesChanged();
    Q_EMIT stateChanged();
}

void TDeskModel::note(TLogLevel level, const QString& text)
{
    FLog.add({level, QDateTime::currentDateTime().toString(Qt::ISODate), text});
}

} // namespace tnv5::desk
