#include "tnv5/bank/serial_bank_pos.h"

#include "tnv5/bank/bank_frame.h"
#include "tnv5/bank/serial_bank_texts.h"
#include "tnv5/bank/terminal_version.h"
#include "tnv5/common/elapsed.h"

namespace tnv5::bank {

using platform::TComDataPacket;
using platform::TTimer;

namespace {

constexpr qint64 kTimeOutUnitSeconds = 30LL * 60;

} // namespace

/// What the host is told with a status word; as it stands here: nothing but that there is no discount.
struct TBankPos::TFields
{
    QString CardNo;
    QString CardType;
    QString CardHolder;
    QString Operation;
    QString Answer;
    QString BankType;
    QString DiscountType;
    QString Discount = kNoDiscount;
};

TBankPos::TBankPos(QObject* AOwner) : TComponent(AOwner), FLastAsk(platform::TimeOfDay())
{
    if (Designing()) {
        return;
    }
    ComDataPacket = std::make_unique<TComDataPacket>();
    ComDataPacket->OnCustomStart = [this](TComDataPacket*, const QByteArray& buffer, qsizetype& position) {
        CustomStart(buffer, position);
    };
    ComDataPacket->OnCustomStop = [this](TComDataPacket*, const QByteArray& buffer, qsizetype& position) {
        CustomStop(buffer, position);
    };
    ComDataPacket->OnPacket = [this](TComDataPacket*, const QByteArray& packet) { CustomPacket(packet); };
    FCheckTime = std::make_unique<TTimer>();
    FCheckTime->OnTimer = [this](TTimer*) { OnSendSymbolTimer(); };
}

TBankPos::~TBankPos() = default;

void TBankPos::SetComport(platform::TComPort* Value)
{
    FComport = Value;
    if (ComDataPacket) {
        ComDataPacket->SetComPort(Value);
    }
}

bool TBankPos::SetConnection(bool AOpen)
{
    return Operation(
        [this, AOpen] {
            const QPointer<platform::TComPort> port = FComport;
            if (!port) {
                Fire(FErrorEvent, GetMessage(msgNoPort));
                return false;
            }
            bool done = true;
            Attempt(
                [&] {
                    if (AOpen) {
                        SetUpComport();
                    }
                    if (port) { // the settings of an open port take effect at once, and may end it
                        port->SetConnected(AOpen);
                    }
                },
                [&](const QString& message) {
                    done = false;
                    Fire(FErrorEvent, message);
                });
            if (done && AOpen && FLogEvent) {
                Fire(FErrorEvent,
                     GetMessage(msgWaitingCard)); // to this handler because of that one; intended
            }
            return done;
        },
        false);
}

void TBankPos::GetPosList(QStringList& AValue) const
{
    AValue.clear();
    for (const TTerminalVersion& version : terminalVersions()) {
        AValue << version.name;
    }
}

void TBankPos::SetUpComport()
{
    if (!FComport || versionOf(FPosType) == nullptr) {
        return;
    }
    FComport->SetReadGap(0);
    FComport->SetLine(
        {9600, 8, platform::TParity::None, platform::TStopBits::One}); // a handler may destroy the port
}

void TBankPos::CustomStart(const QByteArray& buffer, qsizetype& position) const
{
    if (versionOf(FPosType) != nullptr) {
        position = frameStart(buffer);
    }
}

void TBankPos::CustomStop(const QByteArray& buffer, qsizetype& position) const
{
    if (versionOf(FPosType) != nullptr) {
        position = frameEnd(buffer);
    }
}

void TBankPos::CustomPacket(const QByteArray& bytes)
{
    Operation([&] {
        FLastAsk = platform::TimeOfDay();
        if (versionOf(FPosType) == nullptr) {
            return;
        }
        const QString packet = QString::fromLatin1(bytes);
        if (isSound(packet)) {
            handle(packet);
        } else {
            acknowledge(false);
        }
    });
}

TBankPos::TFields TBankPos::fieldsOf(const QString& packet) const
{
    const TTerminalVersion& version = *versionOf(FPosType);
    const auto valueUnlessFixed = [&](const QString& tag, const QString& fixed) {
        return tag.isEmpty() ? fixed : valueOf(packet, tag);
    };
    TFields fields;
    fields.CardNo = valueOf(packet, kTagCardNo);
    fields.CardType = valueOf(packet, kTagCardType);
    fields.CardHolder = valueOf(packet, kTagCardHolder);
    fields.Operation = valueOf(packet, kTagOperation);
    fields.Answer = valueOf(packet, kTagAnswer);
    fields.BankType = valueOf(packet, kTagBankType);
    fields.DiscountType = valueUnlessFixed(version.discountTypeTag, kCardDiscountType);
    fields.Discount = valueUnlessFixed(version.discountTag, kNoDiscount);
    return fields;
}

void TBankPos::handle(const QString& packet)
{
    const TFields fields = fieldsOf(packet); // now: any handler may choose another version
    log(kLogOperation + packet);
    bool apply = false;
    switch (kindOf(packet)) {
    case TPacketKind::AmountRequest:
        requestAmount(apply);
        break;
    case TPacketKind::Answer:
        takeAnswer(fields, apply);
        break;
    case TPacketKind::CardRead:
        takeCard(fields, apply);
        break;
    case TPacketKind::EndOfDialogue:
        raise({}, apply, kStatusFinish);
        break;
    case TPacketKind::Unknown:
        break;
    }
}

void TBankPos::requestAmount(bool& apply)
{
    raise({}, apply, kStatusWait);
    log(GetMessage(msgAmountRequest));
    acknowledge(true);
    int amount = 0;
    int discount = 0;
    Fire(FRequestAmount, amount, discount, apply);
    if (apply) { // also when it was set at "WAIT" and nobody knows the amount; intended
        sendAmount(amount, discount, apply);
        return;
    }
    acknowledge(false);
    log(GetMessage(msgCancel));
    raise({}, apply, kStatusAmountRefused);
}

void TBankPos::sendAmount(int amount, int discount, bool& apply)
{
    write(amountFrame(amount, discount).toLatin1());
    log(GetMessage(msgAmountSent) + QString::number(amount));
    FLastCommand = kStatusWait;
    FLastAsk = platform::TimeOfDay();
    FCheckTime->SetEnabled(true);
    raise({}, apply, kStatusWait);
    log(GetMessage(msgWaitingAnswer));
}

void TBankPos::takeAnswer(const TFields& fields, bool& apply)
{
    FCheckTime->SetEnabled(false);
    FLastCommand = kStatusGet;
    raise(fields, apply, kStatusGet);
    const bool accepted = apply;
    acknowledge(accepted);
    if (accepted) {
        judgeAnswer(fields, apply);
        return;
    }
    log(GetMessage(msgCancel));
    raise(fields, apply, kStatusAnswerRefused);
}

// An empty code is ";" and so is in every list that has a code; one that is in both lists is both. Intended.
void TBankPos::judgeAnswer(const TFields& fields, bool& apply)
{
    const QString code = fields.Answer + u';';
    if (FCodeOk.contains(code)) {
        log(GetMessage(msgConfirmed));
        raise(fields, apply, kStatusOk);
    }
    if (FCodeError.contains(code)) {
        log(GetMessage(msgError));
        raise(fields, apply, kStatusError);
    }
}

void TBankPos::takeCard(const TFields& fields, bool& apply)
{
    raise(fields, apply, kStatusStart);
    const bool accepted = apply;
    acknowledge(accepted);
    if (!accepted) {
        log(GetMessage(msgCancel));
        raise(fields, apply, kStatusCardRefused);
    }
}

// By the time of day: midnight looks like silence, unless the limit is longer than a day.
void TBankPos::OnSendSymbolTimer()
{
    Operation([this] {
        const qint64 limit = FTimeOut * kTimeOutUnitSeconds;
        if (!IsConnected() || FLastCommand != kStatusWait ||
            !common::ElapsedMoreThan(platform::TimeOfDay(), FLastAsk, limit)) {
            return;
        }
        FLastCommand.clear();
        FCheckTime->SetEnabled(false);
        bool apply = false;
        raise({}, apply, kStatusTimeout);
    });
}

void TBankPos::raise(const TFields& fields, bool& apply, const QString& status)
{
    Fire(FRequestOperation, fields.CardNo, fields.CardType, fields.CardHolder, fields.Operation,
         fields.Answer, fields.BankType, apply, status, fields.DiscountType, fields.Discount);
}

void TBankPos::acknowledge(bool accepted)
{
    write(QByteArray(1, accepted ? kAccepted : kRefused));
}

void TBankPos::write(const QByteArray& bytes)
{
    if (IsConnected()) { // a handler may have closed the port
        CallOut([&] { FComport->Write(bytes); });
    }
}

QString TBankPos::CutValue(const QString& APacket, const QString& ATag) const
{
    return versionOf(FPosType) == nullptr ? QString() : valueOf(APacket, ATag);
}

QString TBankPos::MakeStr(QChar AChar, int ACount)
{
    return ACount < 1 ? QString() : QString(ACount, AChar);
}

QString TBankPos::GetMessage(int AIndex) const
{
    return messageText(AIndex, FIDLang);
}

void TBankPos::log(const QString& text)
{
    Fire(FLogEvent, text);
}

} // namespace tnv5::bank
