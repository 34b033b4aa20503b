#include "sim/bank_terminal.h"

#include <algorithm>
#include <utility>

namespace tnv5::sim {

namespace {

constexpr qsizetype kLongestFrame = 256;
constexpr int kBitsPerByte = 10;
constexpr int kMsPerSecond = 1'000;

const QByteArray kRequestBody = "\x05";
const QByteArray kEndBody = "\x04";

} // namespace

TSimulatedBankTerminal::TSimulatedBankTerminal(TByteStream& stream, int version)
    : FStream(stream), FVersion(version)
{
    FStream.OnRead = [this](const QByteArray& bytes) { receive(bytes); };
}

TSimulatedBankTerminal::~TSimulatedBankTerminal()
{
    FStream.OnRead = nullptr;
}

bool TSimulatedBankTerminal::begin(const TBankScenario& scenario)
{
    if (!idle()) {
        return false;
    }
    FScenario = scenario;
    FBook.emplace_back();
    if (FBook.size() > kMaxRemembered) {
        FBook.pop_front();
    }
    enter(TStage::Asking);
    sendFrame();
    return true;
}

void TSimulatedBankTerminal::restart()
{
    FLine.clear();
    FQueue.clear();
    FSending = false;
    FHeard.clear();
    if (!idle()) {
        end();
    }
}

void TSimulatedBankTerminal::receive(const QByteArray& bytes)
{
    for (const char byte : bytes) {
        receive(byte);
    }
}

void TSimulatedBankTerminal::receive(char byte)
{
    const bool checkByteNext = FHeard.size() > 1 && FHeard.endsWith(kBankEtx);
    if (checkByteNext) {
        onAmount(std::exchange(FHeard, {}) + byte);
    } else if (!FHeard.isEmpty() && FHeard.size() < kLongestFrame) {
        FHeard += byte;
    } else if (byte == kBankStx) {
        FHeard = QByteArray(1, byte);
    } else {
        FHeard.clear();
        if (byte == kBankAck) {
            onAck();
        } else if (byte == kBankRefusal) {
            onRefusal();
        }
    }
}

bool TSimulatedBankTerminal::unheard(int& count)
{
    return count > 0 && count-- > 0;
}

void TSimulatedBankTerminal::onAck()
{
    if (FStage == TStage::Asking) {
        if (!unheard(FScenario.UnheardRequests)) {
            enter(TStage::AwaitingAmount);
            waitFor(AmountMs);
        }
    } else if (FStage == TStage::CardSent && !unheard(FScenario.UnheardCards)) {
        enter(TStage::Bank);
        if (FScenario.NoAnswer) {
            FBook.back().Fate = TBankFate::Cancelled;
            enter(TStage::Dead);
            FWaiting.clear();
            return;
        }
        wait(BankMs, [this] {
            FBook.back().Code = FScenario.Code;
            enter(TStage::AnswerSent);
            sendFrame();
        });
    } else if (FStage == TStage::AnswerSent && !unheard(FScenario.UnheardAnswers)) {
        FBook.back().Confirmed = true;
        finish(FScenario.BankApproves ? TBankFate::Approved : TBankFate::Declined);
    }
}

void TSimulatedBankTerminal::onRefusal()
{
    switch (FStage) {
    case TStage::Asking:
        repeat(TBankFate::NoAmount);
        break;
    case TStage::AwaitingAmount:
        finish(TBankFate::NoAmount);
        break;
    case TStage::CardSent:
        repeat(TBankFate::Cancelled);
        break;
    case TStage::AnswerSent:
        repeat(TBankFate::Reversed);
        break;
    case TStage::Ending:
        repeat(FBook.back().Fate);
        break;
    default:
        break;
    }
}

void TSimulatedBankTerminal::onAmount(const QByteArray& frame)
{
    if (FStage != TStage::AwaitingAmount) {
        return;
    }
    const std::optional<TBankAmount> amount = readBankAmount(frame);
    if (!amount || unheard(FScenario.DamagedAmounts)) {
        enter(TStage::Asking);
        repeat(TBankFate::NoAmount);
        return;
    }
    TBankRecord& record = FBook.back();
    record.Amount = *amount;
    record.HasAmount = true;
    if (FScenario.SilentAfterAmount) {
        record.Fate = TBankFate::Cancelled;
        FWaiting.clear();
        enter(TStage::Dead);
        return;
    }
    enter(TStage::Card);
    wait(CardMs, [this] {
        if (FScenario.CustomerLeaves) {
            finish(TBankFate::Cancelled);
        } else {
            enter(TStage::CardSent);
            sendFrame();
        }
    });
}

/// Nothing came for too long.
void TSimulatedBankTerminal::onNothing()
{
    switch (FStage) {
    case TStage::Asking:
    case TStage::AwaitingAmount:
        enter(TStage::Asking);
        repeat(TBankFate::NoAmount);
        break;
    case TStage::CardSent:
        repeat(TBankFate::Cancelled);
        break;
    case TStage::AnswerSent:
        repeat(FScenario.BankApproves ? TBankFate::Approved : TBankFate::Declined);
        break;
    case TStage::Ending:
        end();
        break;
    default:
        break;
    }
}

void TSimulatedBankTerminal::enter(TStage stage)
{
    if (FStage != stage && !(FStage == TStage::AwaitingAmount && stage == TStage::Asking) &&
        stage != TStage::AwaitingAmount) {
        FTries = 0;
    }
    FStage = stage;
    if (OnStage) {
        OnStage(stage);
    }
}

void TSimulatedBankTerminal::wait(int ms, std::function<void()> action)
{
    FWaiting.clear();
    FWaiting.after(std::max(ms, 1), std::move(action));
}

void TSimulatedBankTerminal::waitFor(int ms)
{
    wait(ms, [this] { onNothing(); });
}

QByteArrayList TSimulatedBankTerminal::cardFields() const
{
    QByteArrayList fields = {"01=" + FScenario.Card, "02=" + FScenario.Holder, "03=1",
                             "04=" + FScenario.CardType, "10=" + FScenario.BankType};
    if (FStage == TStage::AnswerSent) {
        fields << "06=" + FScenario.Code;
    }
    const QByteArray discount = QByteArray::number(FBook.back().Amount.Discount);
    if (FVersion == 2) {
        fields << "40=" + discount << "41=CL";
    } else if (FVersion == 3) {
        fields << "41=" + discount << "42=CL";
    }
    return fields;
}

void TSimulatedBankTerminal::sendFrame()
{
    ++FTries;
    switch (FStage) {
    case TStage::Asking:
        send(kRequestBody, FScenario.DamagedRequests);
        break;
    case TStage::CardSent:
        send(bankFields(cardFields()), FScenario.DamagedCards);
        break;
    case TStage::AnswerSent:
        send(bankFields(cardFields()), FScenario.DamagedAnswers);
        break;
    case TStage::Ending:
        send(kEndBody, FScenario.DamagedEnds);
        break;
    default:
        break;
    }
    waitFor(FStage == TStage::Ending ? EndMs : AckMs);
}

void TSimulatedBankTerminal::send(const QByteArray& body, int& damaged)
{
    QByteArray frame = bankFrame(body);
    if (unheard(damaged)) {
        frame.back() = static_cast<char>(frame.back() ^ 0x40); // no control byte comes of it
    }
    ++FFrames;
    FQueue += frame;
    pump();
}

/// Once more, or no more.
void TSimulatedBankTerminal::repeat(TBankFate fate)
{
    if (FTries < kTries) {
        sendFrame();
    } else if (FStage == TStage::Ending) {
        end();
    } else {
        finish(fate);
    }
}

void TSimulatedBankTerminal::finish(TBankFate fate)
{
    FBook.back().Fate = fate;
    enter(TStage::Ending);
    sendFrame();
}

void TSimulatedBankTerminal::end()
{
    FWaiting.clear();
    if (FBook.back().Fate == TBankFate::UnderWay) {
        FBook.back().Fate = FBook.back().HasAmount ? TBankFate::Cancelled : TBankFate::NoAmount;
    }
    enter(TStage::Idle);
    if (OnEnd) {
        OnEnd(FBook.back());
    }
}

void TSimulatedBankTerminal::pump()
{
    if (FSending || FQueue.isEmpty()) {
        return;
    }
    if (BaudRate <= 0) {
        FStream.write(std::exchange(FQueue, {}));
        return;
    }
    const auto size = static_cast<int>(std::min<qsizetype>(std::max(PieceBytes, 1), FQueue.size()));
    const int ms = (size * kBitsPerByte * kMsPerSecond + BaudRate - 1) / BaudRate;
    FSending = true;
    FLine.after(ms, [this, size] {
        const QByteArray piece = FQueue.first(size);
        FQueue.remove(0, size);
        FSending = false;
        FStream.write(piece);
        pump();
    });
}

} // namespace tnv5::sim
