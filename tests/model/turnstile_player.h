#pragma once

#include "model/turnstile_gate.h"

#include <functional>
#include <initializer_list>
#include <random>

namespace tnv5::turnstile::model {

/// Plays one random scenario against a gate and writes down everything that happens. What it does next
/// depends on its seed and on what the gate shows, so two gates that behave alike get the same scenario.
class TPlayer final : public IHost
{
public:
    explicit TPlayer(quint64 seed) : FRandom(seed) {}

    /// A time of day to start at, often shortly before midnight.
    qint64 startMs();
    void begin(IGate& gate);
    /// One stimulus, with everything that its handlers do inside it, and what the gate shows afterwards.
    void step();

    QStringList takeTrace() { return std::exchange(FTrace, {}); }

    void log(int handler, const QString& text) override;
    void error(int handler, const QString& text) override;
    void status(int handler, TSender sender, const QStringList& values) override;
    void sql(int handler, const QStringList& pass, int picture, const TDraw& draw, int mode,
             QVariant& result) override;
    void image(int handler, const QString& device, int picture, const TDraw& draw) override;
    void echo(const QString& text) override;
    bool connected() override;
    void forward(const QString& line) override;
    void writing(int port) override;
    void written(int port, const QByteArray& bytes) override;
    void unhandled(const QString& message) override;

private:
    // chance
    int below(int limit) { return static_cast<int>(FRandom() % static_cast<quint64>(limit)); }
    int between(int low, int high) { return low + below(high - low + 1); }
    bool chance(int perMille) { return below(1000) < perMille; }
    template <class Value>
    Value oneOf(std::initializer_list<Value> values)
    {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

    // what to say
    QString address();
    QString oddAddress();
    QString card();
    QString mixedCase(QString text);
    QString event();
    QString message();
    QString line();
    QByteArray noise();
    QByteArray stream();
    QVariant answer(int mode);
    QString word();

    // what to do
    void create();
    void act();
    void feed();
    void passTime();
    void jump();
    void jumpToLimit();
    void moveTo(qint64 ms);
    void useTable();
    void command();
    void askCheck();
    void lookAround();
    void setProperty();
    void assignHandlers();
    void touchPort();
    void editRecord();
    void switchMode();
    void call(const std::function<void()>& body);

    /// What a handler may do: call back, destroy the gate, raise.
    void react(bool mayRaise, bool mayDestroy);
    [[noreturn]] void raise();
    void note(const QString& text) { FTrace.append(text); }
    void noteState();

    std::mt19937_64 FRandom;
    IGate* FGate = nullptr;
    QStringList FTrace;
    int FNested = 0;  // per mille of handler calls that call back
    int FRaising = 0; // per mille that raise
    int FDestroying = 0;
    int FDepth = 0;
    int FBudget = 0;  // nested stimuli left in this step
    int FWriting = 0; // writes under way: their port must stay
    int FVirtual = 0; // virtual methods of the gate under way: it must stay
    int FInterval = 0;
    bool FDesigning = false;
    bool FLineUp = true; // the remote server can be reached
};

} // namespace tnv5::turnstile::model
