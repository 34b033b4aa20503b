#include "tnv5/scales/scales_device.h"

#include "tnv5/common/busy_scope.h"
#include "tnv5/common/convert.h"
#include "tnv5/common/elapsed.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_texts.h"

#include <cstdlib>

namespace tnv5::scales {

using platform::TComDataPacket;
using platform::TTimer;

namespace {

constexpr int kAnswerSeconds = 3;
constexpr int kUnansweredCycles = 3;

} // namespace

TScalesDevice::TScalesDevice(QObject* AOwner) : TComponent(AOwner), FLastAsk(platform::TimeOfDay())
{
    if (Designing()) {
        return;
    }
    ComDataPacket = std::make_unique<TComDataPacket>();
    bind();
    FCheckTime = std::make_unique<TTimer>();
    FCheckTime->OnTimer = [this](TTimer*) { OnSendSymbolTimer(); };
}

TScalesDevice::~TScalesDevice() = default;

void TScalesDevice::bind()
{
    if (!ComDataPacket) {
        return;
    }
    ComDataPacket->OnCustomStart = [this](TComDataPacket*, const QByteArray& buffer, qsizetype& position) {
        CustomStart(buffer, position);
    };
    ComDataPacket->OnCustomStop = [this](TComDataPacket*, const QByteArray& buffer, qsizetype& position) {
        CustomStop(buffer, position);
    };
    ComDataPacket->OnPacket = [this](TComDataPacket*, const QByteArray& packet) { CustomPacket(packet); };
    ComDataPacket->SetComPort(FComport);
}

void TScalesDevice::SetLastWeight(int Value)
{
    Operation([this, Value] {
        if (Value != FLastWeight && Value >= 1 && FWeightEvent && !FBusy) {
            FLastWeight = Value;
            const common::TBusyScope busy(*this, FBusy);
            Fire(FWeightEvent, Value);
        }
        FLastWeight = Value;
    });
}

void TScalesDevice::SetScalesType(int Value)
{
    FScalesType = Value;
    const TFamily* family = familyOf(Value);
    if (family != nullptr && ComDataPacket && !family->start.isEmpty()) {
        ComDataPacket->SetStartString(family->start);
        ComDataPacket->SetStopString(family->stop);
    }
}

void TScalesDevice::SetComport(platform::TComPort* Value)
{
    FComport = Value;
    bind();
}

void TScalesDevice::SetSendInterval(int Value)
{
    if (Value != FSendInterval && FCheckTime) {
        FCheckTime->SetEnabled(false);
        FCheckTime->SetInterval(Value);
        FCheckTime->SetEnabled(Value != -1);
    }
    FSendInterval = Value;
}

bool TScalesDevice::SetConnection(bool AOpen)
{
    return Operation(
        [this, AOpen] {
            if (!FComport) {
                Fire(FErrorEvent, GetMessage(msgNoPort));
                return false;
            }
            bool done = true;
            Attempt([&] { FComport->SetConnected(AOpen); },
                    [&](const QString& message) {
                        done = false;
                        Fire(FErrorEvent, message);
                    });
            return done;
        },
        false);
}

void TScalesDevice::GetScalesList(QStringList& AValue) const
{
    AValue.clear();
    for (const TFamily& family : families()) {
        AValue << family.name;
    }
}

void TScalesDevice::SetUpComport()
{
    Operation([this] {
        const TFamily* family = familyOf(FScalesType);
        if (FComport && family != nullptr) {
            FComport->SetReadGap(family->readGapMs);
            if (family->settings) {
                CallOut([&] { FComport->SetLine(*family->settings); });
            }
        }
        bind();
    });
}

int TScalesDevice::GetWeight(bool Safe)
{
    return Operation(
        [this, Safe] {
            FLastWeight = 0;
            const TFamily* family = familyOf(FScalesType);
            if (!IsConnected() || family == nullptr) {
                return -1;
            }
            if (!family->continuous()) {
                request(*family);
            }
            FLastAsk = platform::TimeOfDay();
            return Safe ? FLastWeight : wait(family->continuous());
        },
        -1);
}

void TScalesDevice::request(const TFamily& family)
{
    if (silentForLong()) {
        repeatRequest(family);
    } else {
        FCount = 0;
        FLastCommand = TStep::Hey;
        WriteToPort(bytesAsText(family.request));
    }
}

void TScalesDevice::repeatRequest(const TFamily& family)
{
    if (FCount >= kUnansweredCycles && FErrorEvent) {
        Fire(FErrorEvent, GetMessage(msgNoAnswer));
        FCount = 0;
    }
    ++FCount;
    if (family.requestAfterReset) {
        Reset();
        FLastAsk = platform::TimeOfDay();
        WriteToPort(bytesAsText(family.request));
    } else {
        FLastCommand = TStep::Hey;
        WriteToPort(bytesAsText(family.request));
        Reset();
    }
}

int TScalesDevice::wait(bool continuous)
{
    while (!silentForLong()) {
        CallOut([] { platform::TClock::current().waitForMessages(); });
        if (FLastWeight > 0) {
            return FLastWeight;
        }
    }
    return continuous ? -1 : FLastWeight;
}

// By the time of day: midnight looks like silence.
bool TScalesDevice::silentForLong() const
{
    return p_hw_checktimebetween(platform::TimeOfDay(), FLastAsk, kAnswerSeconds);
}

void TScalesDevice::OnSendSymbolTimer()
{
    if (IsConnected()) {
        GetWeight(true);
    }
}

void TScalesDevice::WriteToPort(const QString& AText)
{
    Operation([this, text = AText] {
        if (!IsConnected()) {
            return;
        }
        CallOut([&] { FComport->Write(text.toLatin1()); });
        log(kLogSend + text);
    });
}

void TScalesDevice::Reset()
{
    Operation([this] {
        const bool polling = FCheckTime && FCheckTime->Enabled();
        if (FCheckTime) {
            FCheckTime->SetEnabled(false);
        }
        FLastAsk = platform::TimeOfDay();
        FLastCommand = TStep::Hey;
        bind(); // attaching anew empties the splitter's buffer
        if (SetConnection(true) && FCheckTime) {
            FCheckTime->SetEnabled(polling);
        }
        const bool listens = ComDataPacket && ComDataPacket->ComPort();
        log(kLogReset + (listens ? ComDataPacket->ComPort()->Port() : QString()));
    });
}

void TScalesDevice::CustomStart(const QByteArray& buffer, qsizetype& position)
{
    Operation([&] {
        FEndSearch.restart();
        log(kLogStart);
        if (const TFamily* family = familyOf(FScalesType)) {
            position = family->findStart(FLastCommand, buffer);
        }
    });
}

void TScalesDevice::CustomStop(const QByteArray& buffer, qsizetype& position)
{
    Operation([&] {
        log(kLogStop);
        if (const TFamily* family = familyOf(FScalesType)) {
            position = FEndSearch.find(*family, FLastCommand, buffer);
        }
    });
}

void TScalesDevice::CustomPacket(const QByteArray& packet)
{
    Operation([&] {
        FLastAsk = platform::TimeOfDay();
        log(kLogGet + bytesAsText(packet));
        if (const TFamily* family = familyOf(FScalesType)) {
            apply(family->decode(FLastCommand, packet, FLastWeight), packet);
        }
    });
}

void TScalesDevice::apply(const TDecision& decision, const QByteArray& packet)
{
    if (decision.ask) {
        FLastCommand = TStep::Ask;
    }
    for (const QString& line : decision.log) {
        log(line);
    }
    if (!decision.write.isEmpty()) {
        WriteToPort(bytesAsText(decision.write));
        if (decision.askOnceWritten) {
            FLastCommand = TStep::Ask;
        }
        FLastAsk = platform::TimeOfDay();
    }
    if (decision.message >= 0) {
        Fire(FErrorEvent, GetMessage(decision.message));
    }
    if (decision.field) {
        storeField(decision, packet);
    }
    if (decision.change && std::abs(qint64{*decision.change} - FLastWeight) >= kHysteresis) {
        SetLastWeight(*decision.change);
    }
}

void TScalesDevice::storeField(const TDecision& decision, const QByteArray& packet)
{
    if (decision.logField) {
        log(*decision.field);
    }
    int weight = 0;
    try {
        weight = common::StrToInt(*decision.field);
    } catch (const platform::EConvertError&) {
        if (!decision.tolerant) {
            throw; // the packet is lost, the weight stays
        }
    }
    FLastWeight = weight;
    const QString number = QString::number(weight);
    log(decision.tolerant ? bytesAsText(packet) + u' ' + number + u'%' : number);
}

QString TScalesDevice::GetMessage(int AIndex) const
{
    return messageText(AIndex, FIDLang);
}

void TScalesDevice::log(const QString& text)
{
    Fire(FLogEvent, text);
}

bool TScalesDevice::p_hw_checktimebetween(platform::TDateTime ANow, platform::TDateTime ALast, int ALimit)
{
    return common::ElapsedMoreThan(ANow, ALast, ALimit);
}

} // namespace tnv5::scales
