#include "sim/scales.h"

#include "tnv5/platform/errors.h"

#include <algorithm>

namespace tnv5::sim {

namespace {

constexpr int kPeriodMs = 100;

const TScaleWire& wireOf(int family)
{
    const TScaleWire* wire = scaleWire(family);
    if (wire == nullptr) {
        throw platform::Exception(QStringLiteral("There is no family %1 of scales").arg(family));
    }
    return *wire;
}

} // namespace

TSimulatedScale::TSimulatedScale(TByteStream& stream, int family)
    : FStream(stream), FFamily(family), FWire(wireOf(family)), FCapacity(FWire.Most)
{
    FStream.OnRead = [this](const QByteArray& bytes) { receive(bytes); };
    FTalk.SetInterval(kPeriodMs);
    FTalk.OnTimer = [this](platform::TTimer*) { say(FWire.Answer); };
    FTalk.SetEnabled(talksByItself());
}

TSimulatedScale::~TSimulatedScale()
{
    FStream.OnRead = nullptr;
}

void TSimulatedScale::put(int weight, int settleMs)
{
    FSettling.clear();
    FBefore = load().Weight;
    FWeight = weight;
    FSettled = false;
    FSettling.after(settleMs, [this] { FSettled = true; });
}

TLoad TSimulatedScale::load() const
{
    const int weight = FSettled ? FWeight : static_cast<int>((qint64{FBefore} + FWeight) / 2);
    return {weight, FSettled, weight > FCapacity || weight < kLeastWeight};
}

void TSimulatedScale::setCapacity(int weight)
{
    FCapacity = std::clamp(weight, 0, FWire.Most);
}

void TSimulatedScale::setAnswering(bool answering)
{
    FAnswering = answering;
    if (!answering) {
        FAnswersToCome.clear();
    }
}

void TSimulatedScale::setPeriodMs(int ms)
{
    FTalk.SetEnabled(false);
    FTalk.SetInterval(std::max(ms, 1));
    FTalk.SetEnabled(talksByItself());
}

void TSimulatedScale::receive(const QByteArray& bytes)
{
    if (talksByItself()) {
        return;
    }
    const qsizetype longest = std::max(FWire.Request.size(), FWire.Second.size());
    for (const char byte : bytes) {
        FHeard = FHeard.right(longest - 1) + byte;
        if (heard(FWire.Request)) {
            say(FWire.Answer);
        } else if (!FWire.Second.isEmpty() && heard(FWire.Second)) {
            say(FWire.SecondAnswer);
        }
    }
}

bool TSimulatedScale::heard(const QByteArray& request)
{
    if (!FHeard.endsWith(request)) {
        return false;
    }
    FHeard.clear();
    ++FRequests;
    return true;
}

void TSimulatedScale::say(QByteArray (*answer)(const TLoad&))
{
    if (!FAnswering) {
        return;
    }
    FAnswersToCome.after(DelayMs, [this, answer] {
        ++FAnswers;
        FStream.write(answer(load()));
    });
}

} // namespace tnv5::sim
