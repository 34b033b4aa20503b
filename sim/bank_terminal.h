#pragma once

#include "sim/bank_wire.h"
#include "sim/byte_stream.h"
#include "sim/later.h"

#include <deque>

namespace tnv5::sim {

/// A card, the bank behind it and what goes wrong, for one payment.
struct TBankScenario
{
    QByteArray Card = "4111111111111111";
    QByteArray Holder = "CARD/TEST";
    QByteArray CardType = "VISA";
    QByteArray BankType = "7";
    bool BankApproves = true;
    QByteArray Code = "00"; ///< of the bank's answer

    // How many of the first frames of a kind are sent with a wrong check byte.
    int DamagedRequests = 0;
    int DamagedCards = 0;
    int DamagedAnswers = 0;
    int DamagedEnds = 0;
    /// How many of the first amount messages arrive with a wrong check byte.
    int DamagedAmounts = 0;

    // How many of the first acknowledgements the terminal does not hear, so that it repeats the frame.
    int UnheardRequests = 0;
    int UnheardCards = 0;
    int UnheardAnswers = 0;

    bool CustomerLeaves = false;    ///< the dialogue ends instead of a card
    bool SilentAfterAmount = false; ///< the terminal is switched off once it has the amount
    bool NoAnswer = false;          ///< the same while the bank is asked
};

/// How a payment ended, as the terminal knows it.
enum class TBankFate {
    UnderWay,
    NoAmount,  ///< the host refused, or said nothing
    Cancelled, ///< the bank was not asked: nobody showed a card, or the host did not accept it
    Declined,
    Approved,
    Reversed, ///< the host did not accept the answer of the bank
};

/// One payment in the terminal's own book.
struct TBankRecord
{
    TBankAmount Amount;
    QByteArray Code;
    TBankFate Fate = TBankFate::UnderWay;
    bool HasAmount = false;
    bool Confirmed = false; ///< the host accepted the answer
};

/// A bank card terminal with a customer in front of it. It drives the dialogue:
///
/// | step                        | the terminal sends   | it goes on when                              |
/// |-----------------------------|----------------------|----------------------------------------------|
/// | asks for the amount         | STX ENQ ETX 0x06     | an ACK and a sound amount message have come  |
/// | a card is read, `CardMs`    | tags 01 02 03 04 10  | an ACK has come                              |
/// | the bank answers, `BankMs`  | the same and 06      | an ACK has come                              |
/// | ends the dialogue           | STX EOT ETX 0x07     | nothing was said against it for `EndMs`      |
///
/// A frame that is answered with "!" or, for `AckMs`, not at all is repeated, `kTries` times in all. "!" to
/// every try of a card cancels the payment and to every try of an answer reverses it; an answer that nobody
/// acknowledges stands as the bank gave it. A "!" after the ACK of the request refuses the amount.
///
///     TPty pty(QStringLiteral("bank"));
///     TSimulatedBankTerminal terminal(pty, 2);
///     terminal.begin({});
///
/// Frames go out at the speed of the line, in pieces as a serial port hands them over. The stream must
/// outlive it; the hooks must not destroy it.
class TSimulatedBankTerminal final
{
public:
    static constexpr int kTries = 3;
    static constexpr std::size_t kMaxRemembered = 8'192;

    enum class TStage { Idle, Asking, AwaitingAmount, Card, CardSent, Bank, AnswerSent, Ending, Dead };

    /// @param version 1, 2 or 3: decides the tags of the discount fields
    TSimulatedBankTerminal(TByteStream& stream, int version);
    ~TSimulatedBankTerminal();
    TSimulatedBankTerminal(const TSimulatedBankTerminal&) = delete;
    TSimulatedBankTerminal& operator=(const TSimulatedBankTerminal&) = delete;

    /// A customer wants to pay. @return false while another payment is under way
    bool begin(const TBankScenario& scenario);
    TStage stage() const { return FStage; }
    bool idle() const { return FStage == TStage::Idle; }
    /// Switches it off and on again: what is under way ends as it stands.
    void restart();

    int AckMs = 1'000;
    int AmountMs = 3'000;
    int CardMs = 300;
    int BankMs = 300;
    int EndMs = 60;
    /// Speed of the line, ten bits to a byte; 0: frames go out whole and at once.
    int BaudRate = 9'600;
    /// Bytes that the line hands over at a time.
    int PieceBytes = 8;

    /// All payments, the oldest first; of very many only the last.
    const std::deque<TBankRecord>& book() const { return FBook; }
    /// Frames sent, repetitions included.
    qint64 frames() const { return FFrames; }

    std::function<void(TStage stage)> OnStage;
    std::function<void(const TBankRecord& record)> OnEnd;

private:
    void receive(const QByteArray& bytes);
    void receive(char byte);
    void onAck();
    void onRefusal();
    void onAmount(const QByteArray& frame);
    void onNothing();
    void enter(TStage stage);
    void waitFor(int ms);
    void wait(int ms, std::function<void()> action);
    void send(const QByteArray& body, int& damaged);
    void sendFrame();
    void repeat(TBankFate fate);
    void finish(TBankFate fate);
    void end();
    void pump();
    QByteArrayList cardFields() const;
    bool unheard(int& count);

    TByteStream& FStream;
    int FVersion;
    TBankScenario FScenario;
    TStage FStage = TStage::Idle;
    int FTries = 0;
    std::deque<TBankRecord> FBook;
    QByteArray FHeard; // a frame under way
    TLater FWaiting;
    TLater FLine;
    QByteArray FQueue; // bytes on their way out
    bool FSending = false;
    qint64 FFrames = 0;
};

} // namespace tnv5::sim
