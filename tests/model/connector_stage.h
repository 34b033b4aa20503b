#pragma once

#include "model/connector_scenario.h"
#include "tnv5/platform/errors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tnv5::connector::model {

/// Plays the steps of a scenario to one side, the component or its model, and writes down everything that the
/// host can notice. `Side` says how things are made and unmade there.
template <class Side>
class TStage
{
public:
    using Connector = typename Side::Connector;
    using Port = typename Side::Port;

    explicit TStage(Side& side) : FSide(side)
    {
        FSide.onUnhandled([this](const QString& message) { note("unhandled " + shown(message)); });
    }
    ~TStage()
    {
        for (int i = 0; i < kConnectors; ++i) {
            destroyConnector(i);
        }
        for (int i = 0; i < kPorts; ++i) {
            destroyPort(i);
        }
    }
    TStage(const TStage&) = delete;
    TStage& operator=(const TStage&) = delete;

    /// Plays a step; the trace is what happened during it and what can be seen after it.
    std::vector<std::string> play(const TStep& step)
    {
        FTrace.clear();
        FReactions = &step.reactions;
        FReaction = 0;
        apply(step);
        look();
        return FTrace;
    }

private:
    void note(std::string line) { FTrace.push_back(std::string(FDepth * 2, ' ') + std::move(line)); }

    void apply(const TStep& step)
    {
        note("> " + shown(step));
        try {
            perform(step);
            return;
        } catch (const platform::EAbort&) {
            note("raised an abort");
            rethrow(step);
        } catch (const platform::Exception& error) {
            note("raised " + shown(error.message()));
            rethrow(step);
        } catch (const std::exception& error) {
            note("raised standard " + std::string(error.what()));
            rethrow(step);
        } catch (int error) {
            note("raised number " + std::to_string(error));
            rethrow(step);
        } catch (...) {
            note("raised something that must not leave a component");
        }
    }

    void rethrow(const TStep& step) const
    {
        if (step.propagate && FDepth > 0) {
            throw;
        }
    }

    void perform(const TStep& step)
    {
        switch (step.kind) {
        case EStep::Advance:
            return FSide.advance(step.number);
        case EStep::CreateConnector:
            return createConnector(step);
        case EStep::DestroyConnector:
            return destroyConnector(step.who);
        case EStep::CreatePort:
            return createPort(step.who);
        case EStep::DestroyPort:
            return destroyPort(step.who);
        case EStep::Feed:
        case EStep::OpenPort:
        case EStep::ClosePort:
        case EStep::Fail:
        case EStep::PortError:
            if (Port* const port = FPorts[std::size_t(step.who)]) {
                performOnPort(step, *port);
            }
            return;
        default:
            if (Connector* const connector = FConnectors[std::size_t(step.who)]) {
                performOnConnector(step, *connector);
            }
            return;
        }
    }

    void performOnPort(const TStep& step, Port& port)
    {
        switch (step.kind) {
        case EStep::Feed:
            return port.feed(step.bytes);
        case EStep::OpenPort:
            return port.Open();
        case EStep::ClosePort:
            return port.Close();
        case EStep::PortError:
            return FSide.portError(port, step.text, step.number, step.flag);
        default:
            break;
        }
        auto& failure = step.which == 0   ? port.OpenFailure
                        : step.which == 1 ? port.CloseFailure
                                          : port.WriteFailure;
        failure.reset();
        if (step.flag) {
            failure = step.text;
        }
    }

    void performOnConnector(const TStep& step, Connector& connector)
    {
        switch (step.kind) {
        case EStep::SetComport:
            return connector.SetComport(step.which < 0 ? nullptr : FPorts[std::size_t(step.which)]);
        case EStep::SetType:
            return FSide.setType(connector, step.which);
        case EStep::SetHandler:
            return setHandler(step, connector);
        case EStep::SetConnected:
            return FSide.setConnected(connector, step.flag, step.which == 1);
        case EStep::GetConnected:
            return note(FSide.isConnected(connector, step.flag) ? "connected" : "not connected");
        case EStep::CloseAll:
            return connector.CloseAll();
        case EStep::SendCommand:
            return note("result " + shown(connector.SendCommand(step.text)));
        case EStep::SendDirect:
            return connector.SendDirectCommand(step.other, step.text);
        case EStep::GetCommand:
            return connector.GetCommand(step.text);
        case EStep::Diagnostic:
            return note(shown(connector.GetDiagnosticValue(step.text, step.other)));
        case EStep::Process:
            return connector.ProcessDataToDevice(step.other, step.text);
        case EStep::FromList: {
            const auto* const board = connector.GetDeviceFromList(step.other, step.text);
            int index = 0;
            while (index < connector.DeviceCount() && connector.DeviceItem(index) != board) {
                ++index;
            }
            return note("board " + std::to_string(index));
        }
        case EStep::SetWidth:
            if (auto* const board = connector.DeviceItem(step.which)) {
                board->DisplayLine = int(step.number);
            }
            return;
        default:
            return;
        }
    }

    void setHandler(const TStep& step, Connector& connector)
    {
        static constexpr std::array kNames = {"error", "log", "route"};
        const auto handler = [this, who = step.who, name = kNames[std::size_t(step.which)],
                              number = step.number](auto* sender, const QString& text) {
            const bool own = sender == FConnectors[std::size_t(who)];
            happened(own ? who : -1, name + std::to_string(number) + " " + shown(text));
        };
        auto set = &Connector::SetOnError;
        set = step.which == 1 ? &Connector::SetOnLog : step.which == 2 ? &Connector::SetOnGetData : set;
        if (step.number == 0) {
            (connector.*set)(nullptr);
        } else {
            (connector.*set)(handler);
        }
    }

    /// A handler of the host's is called: it does what the scenario has in store for it.
    void happened(int who, const std::string& what)
    {
        note(std::to_string(who) + " " + what);
        if (FReaction >= FReactions->size()) {
            return;
        }
        const TReaction& reaction = (*FReactions)[FReaction++];
        ++FDepth;
        try {
            for (const TStep& step : reaction.steps) {
                apply(step);
            }
        } catch (...) {
            --FDepth;
            throw;
        }
        --FDepth;
        switch (reaction.raise) {
        case ERaise::Nothing:
            return;
        case ERaise::Exception:
            throw platform::Exception(QStringLiteral("the handler fails"));
        case ERaise::Abort:
            throw platform::EAbort();
        case ERaise::Standard:
            throw std::runtime_error("the handler fails otherwise");
        case ERaise::Unknown:
            throw 42;
        }
    }

    void createConnector(const TStep& step)
    {
        Connector*& connector = FConnectors[std::size_t(step.who)];
        if (connector != nullptr) {
            return;
        }
        connector = FSide.newConnector(step.flag);
        FBoards[std::size_t(step.who)].clear();
        const auto prefix = std::to_string(step.who);
        if ((step.which & (ovAsk | ovAlways | ovNever)) != 0) {
            connector->ConnectedHook = [this, prefix, self = connector, way = step.which] {
                note(prefix + " asked");
                return (way & ovAsk) != 0 ? self->BaseConnected() : (way & ovAlways) != 0;
            };
        }
        if ((step.which & (ovWatch | ovSwallow)) != 0) {
            connector->DirectHook = [this, prefix, self = connector, way = step.which](const QString& ip,
                                                                                       const QString& line) {
                note(prefix + " direct " + shown(ip) + " " + shown(line));
                if ((way & ovWatch) != 0) {
                    self->BaseDirect(ip, line);
                }
            };
        }
    }

    void destroyConnector(int who)
    {
        if (Connector* const connector = std::exchange(FConnectors[std::size_t(who)], nullptr)) {
            FSide.destroy(connector);
        }
    }

    void createPort(int who)
    {
        Port*& port = FPorts[std::size_t(who)];
        if (port != nullptr) {
            return;
        }
        port = FSide.newPort();
        const auto inside = [this, who](const char* what) { happened(who, what); };
        port->OnOpening = [inside] { inside("opening"); };
        port->OnClosing = [inside] { inside("closing"); };
        port->OnWriting = [inside] { inside("writing"); };
        port->OnWritten = [this, who](const QByteArray& bytes) { happened(who, "write " + shown(bytes)); };
    }

    void destroyPort(int who)
    {
        if (FPorts[std::size_t(who)] != nullptr) {
            FSide.destroy(std::exchange(FPorts[std::size_t(who)], nullptr));
        }
    }

    void look()
    {
        for (std::size_t i = 0; i < FPorts.size(); ++i) {
            if (const Port* const port = FPorts[i]) {
                note("port " + std::to_string(i) + (port->Connected() ? " open" : " closed") +
                     (port->OnException ? " taken" : ""));
            }
        }
        for (std::size_t i = 0; i < FConnectors.size(); ++i) {
            if (Connector* const connector = FConnectors[i]) {
                lookAt(*connector, i);
            }
        }
    }

    void lookAt(Connector& connector, std::size_t who)
    {
        const auto port = std::find(FPorts.begin(), FPorts.end(), connector.ComPort()) - FPorts.begin();
        note("connector " + std::to_string(who) + " type " + std::to_string(int(connector.ConnectorType())) +
             " port " + (connector.ComPort() == nullptr ? "none" : std::to_string(port)) +
             (connector.OnError() ? " error" : "") + (connector.OnLog() ? " log" : "") +
             (connector.OnGetData() ? " route" : "") + " boards " + std::to_string(connector.DeviceCount()) +
             (connector.DeviceItem(-1) || connector.DeviceItem(connector.DeviceCount()) ? " too many" : ""));
        auto& known = FBoards[who];
        for (int i = 0; i < connector.DeviceCount(); ++i) {
            const auto* const board = connector.DeviceItem(i);
            if (std::size_t(i) == known.size()) {
                known.push_back(board);
            }
            note("board " + std::to_string(i) + (known[std::size_t(i)] == board ? " " : " moved ") +
                 shown(board->IP) + shown(board->Device) + shown(board->DeviceType) + " width " +
                 std::to_string(board->DisplayLine) + " heard " +
                 std::to_string(std::llround(board->LastPing * 86'400'000.0)));
        }
    }

    Side& FSide;
    std::array<Connector*, kConnectors> FConnectors{};
    std::array<Port*, kPorts> FPorts{};
    std::array<std::vector<const void*>, kConnectors> FBoards; // where each record was when it appeared
    std::vector<std::string> FTrace;
    const std::vector<TReaction>* FReactions = nullptr;
    std::size_t FReaction = 0;
    std::size_t FDepth = 0;
};

} // namespace tnv5::connector::model
