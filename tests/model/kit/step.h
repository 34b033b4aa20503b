#pragma once

#include <QByteArray>
#include <QStringList>
#include <initializer_list>
#include <vector>

namespace tnv5::modelkit {

/// Random numbers that are the same on every machine.
class TDice
{
public:
    explicit TDice(quint64 seed) : FState(seed) {}

    quint64 next();
    int below(int limit) { return limit <= 0 ? 0 : int(next() % quint64(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool chance(int percent) { return below(100) < percent; }
    bool permille(int parts) { return below(1000) < parts; }
    template <class Value>
    Value pick(std::initializer_list<Value> values)
    {
        return values.begin()[below(int(values.size()))];
    }
    /// One of some texts, written in UTF-8.
    QString text(std::initializer_list<const char*> texts) { return QString::fromUtf8(pick(texts)); }
    /// An index, by the weights.
    int weighted(std::initializer_list<int> weights);
    /// Random bytes, often one of `likely`.
    QByteArray noise(int longest, const QByteArray& likely);

private:
    quint64 FState;
};

constexpr int kManyActs = 12;

/// One thing that is done to a side. What `kind` stands for, and what the arguments mean, is the model's
/// business, but for the kinds of `EGroundStep`.
struct TStep
{
    int kind{};
    QStringList text{};
    qint64 a{};
    qint64 b{};
    qint64 c{};
    QByteArray bytes{};
    std::vector<int> cuts{};    ///< sizes of the reads that the bytes come in; the rest comes last
    quint64 seed{};             ///< of what the host does meanwhile
    int acts = kManyActs;       ///< how often it may act at most
    std::vector<TStep> first{}; ///< what the first handler that is called does
};

/// What the kit itself does to ports and time; the numbers of a model's own steps begin at 0.
enum EGroundStep {
    Feed = 1000, ///< `bytes` arrive at port `a`
    Advance,     ///< `a` ms pass
    Jump,        ///< the clock is set to `a`, or by `b` when that is 0; ticks keep their distance
    OpenPort,    ///< port `a`, by its owner
    ClosePort,   ///< port `a`, by its owner
    Fail,      ///< port `a` fails from now on to open, close or write (`b`) with `text`; no more without one
    PortError, ///< port `a` reports error `b` with `text`; inside an operation if `c`
    NewPort,   ///< port `a`, where there is none
    DestroyPort, ///< port `a`
    RenewPort,   ///< port `a` is destroyed, and another one takes its place
    Raise,       ///< the handler raises
    Visit,       ///< a client comes to the server from the address `text`
    Leave,       ///< client `a` leaves
    Say,         ///< client `a` sends `bytes`
    Deaf,        ///< sends to client `a` fail from now on with `text`; no more without one
    ClientError, ///< the system reports error `b` of client `a`, with `text`
    Told,        ///< the server sends `bytes`
    Answered,    ///< the server answers a call that is under way
    LinkError,   ///< the system reports error `b` of the link to the server, with `text`
    HangUp,      ///< the server ends the link in good order
};

/// An enumeration of a model's own steps that keeps their names.
#define TNV5_STEPS(...)                                                                                      \
    enum EStep { __VA_ARGS__ };                                                                              \
    inline constexpr const char* kStepNames = #__VA_ARGS__;

/// A step, a text, bytes for people: control characters as codes, long ones cut but told apart.
QString shown(const TStep& step, const char* names);
QString shown(const QString& text);
QString shown(const QByteArray& bytes);
/// Numbers for a trace.
QString shown(std::initializer_list<qint64> numbers);
/// Sizes of the reads that so many bytes come in.
std::vector<int> randomCuts(TDice& dice, qsizetype size);
/// Bytes come to a port, in one read or in several.
TStep fed(TDice& dice, int port, const QByteArray& bytes);

} // namespace tnv5::modelkit
