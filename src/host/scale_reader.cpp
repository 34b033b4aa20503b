#include "tnv5/host/scale_reader.h"

#include <algorithm>

namespace tnv5::host {

TScaleReader::TScaleReader(scales::TScalesDevice& scales) : FScales(scales)
{
    FTimer.SetInterval(kLookMs);
    FTimer.OnTimer = [this](platform::TTimer*) { look(); };
}

void TScaleReader::start()
{
    FSilentMs = 0;
    FCandidate = 0;
    FAlike = 0;
    ask();
    FTimer.SetEnabled(true);
}

void TScaleReader::stop()
{
    FTimer.SetEnabled(false);
}

void TScaleReader::ask()
{
    FSinceAskMs = 0;
    FReading = 0;
    FBytesBefore = FScales.ComPort() ? FScales.ComPort()->bytesRead() : 0;
    FScales.GetWeight(true);
}

void TScaleReader::look()
{
    FSinceAskMs += kLookMs;
    const int weight = FScales.LastWeight();
    if (weight > 0 && weight != FReading) {
        FReading = weight;
        tellReading(weight);
    }
    const bool answered = FScales.ComPort() && FScales.ComPort()->bytesRead() != FBytesBefore;
    FSilentMs = answered ? 0 : FSilentMs + kLookMs;
    if (FSilentMs == PatienceMs && OnSilent) {
        OnSilent();
    }
    if (FTimer.Enabled() && FSinceAskMs >= kAskMs) {
        endQuestion(answered);
    }
}

void TScaleReader::endQuestion(bool answered)
{
    if (answered && FReading == 0) {
        tellReading(0);
    }
    FAlike = FReading == FCandidate ? std::min(FAlike + 1, kSteadyReadings) : 1;
    FCandidate = FReading;
    if (FAlike >= kSteadyReadings && FCandidate > 0 && OnSteady) {
        OnSteady(FCandidate);
    }
    if (FTimer.Enabled()) {
        ask();
    }
}

void TScaleReader::tellReading(int weight)
{
    if (OnReading) {
        OnReading(weight);
    }
}

} // namespace tnv5::host
