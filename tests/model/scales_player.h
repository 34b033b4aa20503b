#pragma once

#include "model/scales_samples.h"
#include "model/scales_side.h"

#include <string>
#include <utility>
#include <vector>

namespace tnv5::scales::model {

/// What a host or a scale may do next.
enum class TDo {
    Feed,
    Advance,
    Jump,
    GetWeight,
    WeighAndWait,
    SetType,
    SetUp,
    SetComport,
    Reset,
    Connect,
    HostOpen,
    HostClose,
    Interval,
    LastWeight,
    Lang,
    Handler,
    Write,
    Fault,
    Name,
    Settings,
    RenewPort,
    Destroy,
    Create,
    Raise,
    Message,
    List,
    Helpers
};

struct TAction
{
    TDo what = TDo::Advance;
    int number = 0;
    int other = 0;
    double first = 0;
    double second = 0;
    qint64 ms = 0;
    QByteArray bytes{};
    std::vector<int> cuts{}; // sizes of the pieces; the rest comes last
    QString text{};
    QString more{};
    TPortState settings{};
    bool careless = false; // what it raises is left to whoever called
};

std::string describe(const TAction& action);

/// What actions are made for.
struct TView
{
    bool exists = false;
    int type = 0;
    int lastWeight = 0;
    bool asked = false; // the last bytes written were the second request of a dialogue
};

/// How wild a scenario is.
struct TTemper
{
    bool design = false;
    bool silent = false;   // the scale seldom answers, and the host asks on
    bool restless = false; // the family is changed between the pieces of a packet
    int typeChanges = 0;   // percent of the actions that set up something
    int interference = 0;  // in 1000, of the events whose handler does something
    int raising = 0;       // in 1000, of the events whose handler raises
    int answers = 0;       // percent of the requests that are answered while they are written
    qint64 start = 0;
};

TTemper anyTemper(TRandom& random);
TAction anyAction(TRandom& random, const TView& view, const TTemper& temper);
TAction anyFeed(TRandom& random, const TView& view, const TTemper& temper);
/// What makes a scale ready to be asked; now and then a step is missing.
std::vector<TAction> beginning(TRandom& random, const TTemper& temper);

/// Plays actions on one side and writes down all that happens. Handlers act by chance too; both sides do the
/// same as long as they tell the same.
class TPlayer
{
public:
    TPlayer(std::unique_ptr<TSide> side, const TTemper& temper, quint64 seed);

    void play(const TAction& action);
    TView view() const;
    /// What happened since the last call.
    std::vector<std::string> takeTrace() { return std::exchange(FTrace, {}); }

private:
    void hear(TEvent event, const QString& text);
    void interfere(TEvent event);
    void interfereWithWeight();
    void pass();
    void perform(const TAction& action);
    void act(const TAction& action);
    void actOnComponent(const TAction& action);
    void help(const TAction& action);
    void writeState();
    void note(const std::string& line);

    std::unique_ptr<TSide> FSide;
    TTemper FTemper;
    TRandom FRandom;
    std::vector<std::string> FTrace;
    bool FAsked = false;
    bool FPassing = false; // no port is at work: a handler may destroy one
    int FDepth = 0;        // handlers that run
    int FNested = 0;       // actions of handlers since the last stimulus
    int FPasses = 0;       // of the message loop since the last stimulus
};

} // namespace tnv5::scales::model
