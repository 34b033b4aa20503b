#pragma once

#include "tnv5/platform/automation/value.h"

#include <QStringList>
#include <QVariant>
#include <functional>
#include <map>
#include <memory>
#include <optional>

/// Simulated card terminals behind the five outside libraries: the other side of an automation object,
/// written from what the libraries are asked alone.
namespace tnv5::sim {

/// A text as an automation object takes it.
inline std::u16string wide(const QString& text)
{
    return text.toStdU16String();
}

/// How a payment at a simulated terminal ends.
enum class TPosEnd {
    Approve,
    Decline,    ///< the bank has a reason
    TimeOut,    ///< nobody puts a card in
    BreakOff,   ///< the customer presses the red button
    Crash,      ///< the library's process dies while the bank is asked
    Hang,       ///< the library does not answer any more once the bank is asked
    Unconfirmed ///< the bank agrees, and the second half of a payment fails where there is one (library 1)
};

/// "approve", "decline", "timeout", "break", "crash", "hang", "unconfirmed"; nothing for another word.
std::optional<TPosEnd> posEndOf(const QString& word);

/// What the terminal is told to do.
struct TPosScenario
{
    TPosEnd end = TPosEnd::Approve;
    int reason = 51;  ///< the bank's code of a refusal
    int stepMs = 400; ///< from one status text to the next
    int unsent = 0;   ///< how many actions cannot be sent; back-end 4 only
};

/// What a call of the library gives.
struct TPosReply
{
    platform::automation::TValue result{};
    std::vector<platform::automation::TValue> outs{}; ///< new values of the arguments by reference
    int afterMs = 0;                                  ///< when it comes
    QString error{};                                  ///< what is raised instead
    TPosEnd end = TPosEnd::Approve;                   ///< `Crash` and `Hang`: there is no answer
    /// Events before it, each so many ms after the call.
    struct TEvent
    {
        int afterMs;
        QString name;
        platform::automation::TValue value;
    };
    std::vector<TEvent> events{};
};

/// A day's takings of one kind.
struct TPosTurnover
{
    int number = 0;
    qint64 amount = 0;
};

/// The machine itself: one operation at a time, with the texts that it shows, and the book of its day.
class TPosMachine
{
public:
    explicit TPosMachine(const TPosScenario& scenario) : FScenario(scenario) {}

    enum class TKind { Payment, Refund, CashAdvance, Other };

    /// Begins an operation that a card is needed for, or `Other`, which is over at once.
    void begin(TKind kind, qint64 amount = 0);
    /// The steps that have passed since then; an operation is over after `kSteps`.
    int step() const;
    bool over() const { return step() >= kSteps; }
    /// Ends an operation that is over, or is not waited for by its steps: books it when it is approved.
    bool finish();
    void closeDay();

    bool approved() const
    {
        return FKind == TKind::Other || FScenario.end == TPosEnd::Approve ||
               FScenario.end == TPosEnd::Unconfirmed;
    }
    /// Whether the machine is beyond help by now.
    std::optional<TPosEnd> lost() const;
    /// The reason for which there is no approval.
    int errorCode() const;
    QString errorText() const;
    /// What it shows at a step.
    static QString shown(int step);

    const TPosScenario& scenario() const { return FScenario; }
    TPosScenario& scenario() { return FScenario; }
    QString rrn() const { return QString::number(100'000 + FInvoice); }
    QString authCode() const { return QStringLiteral("A%1").arg(FInvoice, 5, 10, QLatin1Char('0')); }
    int invoice() const { return FInvoice; }
    TPosTurnover debit() const { return FDebit; }
    TPosTurnover credit() const { return FCredit; }
    TPosTurnover cancelled() const { return FCancelled; }

    static constexpr int kSteps = 3; ///< card, PIN, bank
    static constexpr int kBankStep = 2;

private:
    TPosScenario FScenario;
    TKind FKind = TKind::Other;
    qint64 FAmount = 0;
    qint64 FBeganMs = 0;
    bool FBooked = true;
    int FInvoice = 0;
    TPosTurnover FDebit, FCredit, FCancelled;
};

/// A library with its machine.
class TSimulatedPos
{
public:
    using TValue = platform::automation::TValue;

    explicit TSimulatedPos(const TPosScenario& scenario) : machine(scenario) {}
    virtual ~TSimulatedPos() = default;
    Q_DISABLE_COPY_MOVE(TSimulatedPos)

    /// A call; a method that the library does not have is an error.
    virtual TPosReply call(const QString& method, const QVariantList& arguments) = 0;

    TPosMachine machine;
    /// Properties and constants.
    std::map<QString, TValue> properties;

protected:
    static TPosReply unknown(const QString& method);
};

/// The library of a `PosType`, 0 to 4.
std::unique_ptr<TSimulatedPos> makeSimulatedPos(int type, const TPosScenario& scenario);

// each a file
std::unique_ptr<TSimulatedPos> makePolledPos(bool second, const TPosScenario& scenario);
std::unique_ptr<TSimulatedPos> makeControlPos(const TPosScenario& scenario);
std::unique_ptr<TSimulatedPos> makePadPos(const TPosScenario& scenario);
std::unique_ptr<TSimulatedPos> makeMessagePos(const TPosScenario& scenario);

/// The name on the bus of a `PosType`'s library.
QString posBusName(int type);

} // namespace tnv5::sim
