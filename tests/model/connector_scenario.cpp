#include "model/connector_scenario.h"

#include "model/connector_words.h"
#include "tnv5/testing/manual_clock.h"

#include <QHash>
#include <array>

namespace tnv5::connector::model {

namespace {

class TGenerator
{
public:
    explicit TGenerator(quint64 seed) : FDice(seed), FWords(FDice)
    {
        FReacting = FDice.pick({0, 5, 15, 35});
        FRaising = FDice.pick({0, 5, 25});
        FDestroying = FDice.chance(30);
    }

    TScenario scenario()
    {
        TScenario result;
        result.startMs = testkit::TManualClock::at(FDice.chance(30) ? 23 : 12, 59, 59, FDice.below(1000));
        result.cyrillic = !FDice.chance(15);
        FSteps = &result.steps;
        create(0, FDice.chance(88));
        if (FDice.chance(35)) {
            create(1, FDice.chance(85));
        }
        const int count = FDice.between(20, 200);
        while (int(result.steps.size()) < count) {
            topLevel();
        }
        return result;
    }

private:
    // A step, with what handlers do meanwhile.
    void add(TStep step)
    {
        for (int i = 0; i < 12 && FDice.chance(FReacting * 2); ++i) {
            step.reactions.emplace_back();
            if (FDice.chance(FReacting)) {
                for (int steps = FDice.between(1, 3); steps > 0; --steps) {
                    step.reactions.back().steps.push_back(nested());
                }
            }
            if (FDice.chance(FRaising)) {
                step.reactions.back().raise = ERaise(FDice.below(5));
            }
        }
        FSteps->push_back(std::move(step));
    }

    TStep make(EStep kind, int who) const
    {
        TStep step;
        step.kind = kind;
        step.who = who;
        return step;
    }

    int connector() { return FDice.chance(80) ? 0 : 1; }
    int port() { return FDice.chance(75) ? 0 : FDice.below(kPorts); }

    // Ports, a connector and everything that makes it work; or nearly everything.
    void create(int who, bool whole)
    {
        for (int i = 0; i < kPorts; ++i) {
            add(make(EStep::CreatePort, i));
            for (int which = 0; which < 3; ++which) {
                TStep step = make(EStep::Fail, i);
                step.which = which;
                add(step);
            }
        }
        TStep step = make(EStep::CreateConnector, who);
        step.flag = FDice.chance(4);
        step.which = FDice.chance(12) ? 1 << FDice.below(5) : 0;
        step.which |= FDice.chance(5) ? 1 << FDice.below(5) : 0;
        add(step);
        step = make(EStep::SetType, who);
        step.which = whole ? 1 : FDice.below(3);
        add(step);
        step = make(EStep::SetComport, who);
        step.which = whole ? who : FDice.between(-1, kPorts - 1);
        add(step);
        for (int which = 0; which < 3; ++which) {
            step = make(EStep::SetHandler, who);
            step.which = which;
            step.number = whole || FDice.chance(60);
            add(step);
        }
        if (FDice.chance(70)) {
            add(make(EStep::OpenPort, who));
        }
    }

    void topLevel()
    {
        const int roll = FDice.below(100);
        if (roll < 34) {
            lines();
        } else if (roll < 37) {
            create(connector(), FDice.chance(90));
        } else if (roll < 39) {
            knownWidthShown();
        } else if (roll < 41) {
            disturbedOpening();
        } else if (roll < 42 && FDestroying) {
            destroyedByHandler();
        } else {
            TStep step = any();
            if (step.kind == EStep::DestroyConnector && !FDice.chance(30)) {
                step.kind = EStep::CloseAll;
            }
            add(step);
        }
    }

    // Several lines, cut into reads anywhere, sometimes with something else between two reads.
    void lines()
    {
        QByteArray bytes;
        for (int i = FDice.between(1, FDice.chance(20) ? 8 : 3); i > 0; --i) {
            bytes += FWords.stretchOfWire();
        }
        const int to = port();
        const int pieces = FDice.chance(50) ? 0 : FDice.between(1, FDice.chance(10) ? 30 : 5);
        for (int i = 0; i <= pieces; ++i) {
            TStep step = make(EStep::Feed, to);
            const auto size = i == pieces ? bytes.size() : FDice.below(int(bytes.size()) + 1);
            step.bytes = bytes.left(size);
            bytes.remove(0, size);
            add(step);
            if (FDice.chance(5)) {
                add(any());
            }
        }
    }

    // A display of the width that its lines just fit, or nearly.
    void knownWidthShown()
    {
        TStep step = make(EStep::FromList, connector());
        step.text = "000A";
        step.other = "0.0.0.0";
        add(step);
        for (int board = 0; board < 3; ++board) {
            step.kind = EStep::SetWidth;
            step.which = board;
            step.number = FDice.between(1, 24);
            add(step);
        }
        step.kind = EStep::SendCommand;
        step.text = FWords.displayCommand();
        add(step);
    }

    // A command opens the port, and what the command needs changes while it does.
    void disturbedOpening()
    {
        const int who = connector();
        TStep step = make(EStep::SetComport, who);
        step.which = 0;
        add(step);
        add(make(EStep::ClosePort, 0));
        step = make(EStep::SendCommand, who);
        step.text = FWords.command();
        TStep change = make(FDice.chance(50) ? EStep::SetComport : EStep::SetType, who);
        change.which = FDice.between(change.kind == EStep::SetType ? 0 : -1, kPorts - 1);
        step.reactions.push_back({{change}, ERaise::Nothing});
        add(step);
    }

    // The first handler called destroys its connector, and may raise behind that.
    void destroyedByHandler()
    {
        TStep step = talk();
        if (FDice.chance(50)) {
            step = make(EStep::PortError, port());
            step.number = 5;
            step.flag = FDice.chance(50);
        }
        step.reactions.push_back({{make(EStep::DestroyConnector, connector())}, ERaise(FDice.below(5))});
        add(step);
        create(0, true);
    }

    TStep nested()
    {
        TStep step = any();
        if (FDestroying && FDice.chance(10)) {
            step = make(EStep::DestroyConnector, connector());
        } else if (FDice.chance(12)) {
            step = make(EStep::Feed, port());
            step.bytes = FWords.stretchOfWire();
        } else if (step.kind == EStep::DestroyConnector && !FDestroying) {
            step.kind = EStep::CloseAll;
        }
        step.propagate = FDice.chance(40);
        return step;
    }

    TStep any() { return FDice.chance(50) ? talk() : FDice.chance(70) ? setting() : portStep(); }

    TStep talk()
    {
        static constexpr std::array kKinds = {EStep::SendCommand, EStep::SendCommand, EStep::SendCommand,
                                              EStep::SendCommand, EStep::SendDirect,  EStep::GetCommand,
                                              EStep::Diagnostic,  EStep::FromList,    EStep::Process,
                                              EStep::Process,     EStep::Process};
        TStep step = make(kKinds[std::size_t(FDice.below(int(kKinds.size())))], connector());
        step.other = FWords.ip();
        switch (step.kind) {
        case EStep::SendCommand:
            step.text = FWords.command();
            break;
        case EStep::Diagnostic:
            FWords.diagnostic(step.text, step.other);
            break;
        case EStep::FromList:
            step.text = FWords.address();
            break;
        default:
            step.text = FWords.hostLine();
            break;
        }
        return step;
    }

    TStep setting()
    {
        static constexpr std::array kKinds = {
            EStep::SetComport,       EStep::SetType,      EStep::SetHandler,   EStep::SetHandler,
            EStep::SetConnected,     EStep::SetConnected, EStep::GetConnected, EStep::SetWidth,
            EStep::SetWidth,         EStep::CloseAll,     EStep::Advance,      EStep::Advance,
            EStep::DestroyConnector, EStep::SetComport};
        TStep step = make(kKinds[std::size_t(FDice.below(int(kKinds.size())))], connector());
        step.flag = FDice.chance(50);
        switch (step.kind) {
        case EStep::SetComport:
            step.which = FDice.chance(20) ? -1 : port();
            break;
        case EStep::SetConnected:
            step.which = FDice.below(2);
            break;
        case EStep::SetType:
            step.which = FDice.chance(60) ? 1 : FDice.below(3);
            break;
        case EStep::SetHandler:
            step.which = FDice.below(3);
            step.number = FDice.pick({0, 1, 1, 2});
            break;
        case EStep::SetWidth:
            step.which = FDice.below(8);
            step.number = FDice.pick({-1, 0, 1, 2, 5, 10, 16, 20, 21, -20, 300});
            break;
        case EStep::Advance:
            step.number = FDice.pick({1, 999, 1000, 1001, 60'000, 86'400'000});
            break;
        default:
            break;
        }
        return step;
    }

    TStep portStep()
    {
        static constexpr std::array kKinds = {EStep::OpenPort,  EStep::OpenPort,   EStep::ClosePort,
                                              EStep::Fail,      EStep::Fail,       EStep::PortError,
                                              EStep::PortError, EStep::CreatePort, EStep::DestroyPort};
        TStep step = make(kKinds[std::size_t(FDice.below(int(kKinds.size())))], port());
        step.which = FDice.below(3);
        step.flag = FDice.chance(45);
        step.number = FDice.pick({0, 0, 1, 5, -1, 1'099'511'627'776});
        step.text = FDice.pick<const char*>({"no such device", "", "Доступ запрещён"});
        return step;
    }

    TDice FDice;
    TWords FWords;
    std::vector<TStep>* FSteps = nullptr;
    int FReacting;    // per cent of handlers that do something
    int FRaising;     // per cent of those that raise
    bool FDestroying; // handlers may destroy connectors
};

std::string escaped(QStringView text)
{
    std::string result;
    for (const QChar character : text.left(200)) {
        const auto code = character.unicode();
        if (code >= 32 && code < 127) {
            result += static_cast<char>(code);
        } else {
            result += "<" + QByteArray::number(code, 16).toStdString() + ">";
        }
    }
    if (text.size() > 200) {
        result += "... " + std::to_string(text.size()) + " " + std::to_string(qHash(text));
    }
    return "'" + result + "'";
}

} // namespace

TScenario makeScenario(quint64 seed)
{
    return TGenerator(seed).scenario();
}

std::string shown(const QString& text)
{
    return escaped(text);
}

std::string shown(const QByteArray& bytes)
{
    return escaped(QString::fromLatin1(bytes));
}

std::string shown(const TStep& step)
{
    static constexpr std::array kNames = {"feed",
                                          "advance",
                                          "set port",
                                          "set type",
                                          "set handler",
                                          "set connected",
                                          "is connected",
                                          "close all",
                                          "open port",
                                          "close port",
                                          "fail",
                                          "port error",
                                          "command",
                                          "direct",
                                          "hand over",
                                          "diagnostic",
                                          "from list",
                                          "process",
                                          "width",
                                          "create connector",
                                          "destroy connector",
                                          "create port",
                                          "destroy port"};
    return std::string(kNames[std::size_t(step.kind)]) + " " + std::to_string(step.who) + " " +
           std::to_string(step.which) + " " + std::to_string(step.number) + (step.flag ? " yes " : " no ") +
           shown(step.text) + shown(step.other) + shown(step.bytes);
}

} // namespace tnv5::connector::model
