#pragma once

#include "model/kit/model_sockets.h"
#include "model/kit/model_world.h"
#include "model/kit/step.h"
#include "model/kit/texts.h"

#include <array>

namespace tnv5::modelkit {

constexpr int kMostPorts = 3;

/// How wild a scenario is; in a thousand events that the host hears.
struct TTemper
{
    int nested = 0;  ///< it does something before it answers
    int raising = 0; ///< it raises
};

class IGround;

/// Plays a scenario's steps to one side, the component or its model, and writes down all that its host can
/// notice. Each component has one, a template over the world that it stands on; both sides of a scenario are
/// made with the same seed, and act alike as long as they are told alike.
class TStage
{
public:
    virtual ~TStage() = default;
    Q_DISABLE_COPY_MOVE(TStage)

    /// Plays a step: what happened during it, and what can be seen after it.
    QStringList play(const TStep& step);
    /// What a scenario begins with.
    virtual std::vector<TStep> begin(TDice&) { return {}; }
    /// What comes next. Nothing is gained by steps that the state of the side makes pointless.
    virtual std::vector<TStep> more(TDice& dice) { return {any(dice, false)}; }
    /// One step; `inside`: by a handler while another step is under way.
    virtual TStep any(TDice& dice, bool inside) = 0;
    const char* names() const { return FNames; }

protected:
    TStage(quint64 seed, const char* names) : FTemper(seed), FDice(seed), FNames(names) {}

    /// Does a step of the model's own; what it raises is noted.
    virtual void perform(const TStep& step) = 0;
    /// Notes what can be seen.
    virtual void look() = 0;
    /// A port is at work.
    virtual void portEvent(int port, const QString& what, const QByteArray& bytes);
    /// A component waits for messages.
    virtual void waits() {}

    void note(const QString& line) { FTrace += QString(FDepth * 2, u' ') + line; }
    /// The host hears something: it is noted, and the host may act.
    void heard(const QString& what)
    {
        note(what);
        react(FWild);
    }
    /// Assigns a handler to an event, or none for the number 0.
    template <class Thing, class Setter, class Handler>
    static void assign(Thing& thing, Setter setter, int number, const Handler& handler)
    {
        number == 0 ? (thing.*setter)(nullptr) : (thing.*setter)(handler);
    }
    /// How the trace calls a handler.
    static QString handlerName(const char* event, int number, bool ownSender)
    {
        return QStringLiteral("%1%2%3 ").arg(event).arg(number).arg(ownSender ? "" : " stranger");
    }
    /// A handler that tells the host its values; they must not change under it while its owner is alive.
    template <class Owner>
    auto teller(const char* event, int number, const std::shared_ptr<Owner>& owner)
    {
        return [this, event, number, &owner](auto* sender, const auto&... values) {
            const auto said = [&] { return QStringList{shown(QVariant(values).toString())...}.join(u' '); };
            const QString before = said();
            heard(handlerName(event, number, sender == owner.get()) + before);
            if (owner && said() != before) {
                note("the values changed under the handler");
            }
        };
    }
    /// A text in the caller's hand, which the next call changes, also one that a handler makes meanwhile.
    const QString& said(std::size_t place, const QString& text) { return FSaid.at(place) = text; }
    /// What a handler may do: call back, destroy, raise.
    void react(const TTemper& how);
    /// Does a step inside a handler; it leaves to the caller what it raises, or catches it.
    void nest(const TStep& step, bool leaves);
    void raise();
    int depth() const { return FDepth; }

    /// When a scenario begins: sometime, or (in so many per cent) at most that long before midnight.
    qint64 startMs(int percent, int ms)
    {
        return FTemper.chance(percent) ? kToday + kMsPerDay - FTemper.between(1, ms)
                                       : kToday + FTemper.below(int(kMsPerDay));
    }

    TDice FTemper; ///< what the scenario is like; both sides throw it alike
    TDice FDice;   ///< of the step under way
    TTemper FWild;

private:
    template <class World>
    friend class TGround;
    void apply(const TStep& step, bool leaves);

    const char* FNames;
    IGround* FGround = nullptr;
    QStringList FTrace;
    int FDepth = 0;
    int FActs = 0; // that the host may still do in this step
    std::vector<TStep> FFirst;
    std::array<QString, 2> FSaid;
};

/// What a stage needs from the world of its side.
class IGround
{
public:
    virtual ~IGround() = default;
    virtual bool perform(const TStep& step) = 0; ///< false: not a step of the kit's
    virtual void look() = 0;
    virtual void raise(ERaise kind, const QString& text) = 0;
    virtual QString caught() = 0;
};

/// Ports and time of one side.
template <class World>
class TGround final : public IGround
{
public:
    using Port = typename World::Port;

    TGround(TStage& stage, qint64 startMs, bool cyrillic = true)
        : world(startMs, cyrillic, [&stage](const QString& text) { stage.note("unhandled " + text); }),
          FStage(stage)
    {
        stage.FGround = this;
        world.clock.OnWait = [&stage] { stage.waits(); };
    }

    World world;
    TFarEnd farEnd; ///< of the controller's sockets
    qint64 now() const { return world.clock.nowMs(); }
    Port* port(qint64 index) const { return index < 0 ? nullptr : FPorts.at(std::size_t(index)).get(); }
    /// Index of a port, -1 for none.
    int indexOf(const void* port) const
    {
        for (int i = 0; port != nullptr && i < kMostPorts; ++i) {
            if (FPorts.at(std::size_t(i)).get() == port) {
                return i;
            }
        }
        return -1;
    }

    bool perform(const TStep& step) override
    {
        if (step.kind < Feed) {
            return false;
        }
        if (step.kind >= Visit) {
            performOnSockets(step);
        } else if (step.kind == Advance) {
            world.clock.advance(step.a);
        } else if (step.kind == Jump) {
            const qint64 to = step.a != 0 ? step.a : now() + step.b;
            // far back in the middle of time that passes, it would hardly come to its end
            world.clock.jumpTo(FStage.depth() > 0 ? qMax(to, now() - 1000) : to);
        } else if (step.kind == NewPort && port(step.a) == nullptr) {
            makePort(int(step.a));
        } else if (port(step.a) != nullptr && (step.kind == DestroyPort || step.kind == RenewPort)) {
            World::destroy(FPorts.at(std::size_t(step.a)));
            if (step.kind == RenewPort) {
                makePort(int(step.a));
            }
        } else if (port(step.a) != nullptr) {
            performOn(*port(step.a), step);
        }
        return true;
    }

    void look() override
    {
        for (int i = 0; i < kMostPorts; ++i) {
            if (const Port* const each = port(i)) {
                FStage.note(
                    QStringLiteral("port %1%2%3")
                        .arg(i)
                        .arg(each->Connected() ? " open" : " closed", each->OnException ? " taken" : ""));
            }
        }
        if (const auto* const server = world.server()) {
            FStage.note("sockets " + shown({server->Active(), qint64(server->Connections().size()),
                                            world.client()->Active()}));
        }
    }
    void raise(ERaise kind, const QString& text) override { World::raise(kind, text); }
    QString caught() override { return World::caught(); }

private:
    void makePort(int index)
    {
        const auto made = world.makePort();
        FPorts.at(std::size_t(index)) = made;
        made->OnOpening = [this, index] { FStage.portEvent(index, "opening", {}); };
        made->OnClosing = [this, index] { FStage.portEvent(index, "closing", {}); };
        made->OnWriting = [this, index] { FStage.portEvent(index, "writing", {}); };
        made->OnWritten = [this, index](const QByteArray& bytes) {
            FStage.portEvent(index, "wrote ", bytes);
        };
    }

    void performOnSockets(const TStep& step)
    {
        auto* const server = world.server();
        auto* const client = world.client();
        if (server == nullptr) {
            return;
        }
        const int number = int(step.a);
        const bool known = number >= 0 && number < farEnd.clients;
        const QString text = step.text.value(0);
        if (step.kind == Visit && server->Active()) {
            ++farEnd.clients;
            server->join(text);
        } else if (step.kind == Leave && known) {
            server->leave(number);
        } else if (step.kind == Say && known) {
            server->feed(number, step.bytes);
        } else if (step.kind == Deaf && known) {
            server->failSends(number, step.text.isEmpty() ? std::nullopt : std::optional(text));
        } else if (step.kind == ClientError && known) {
            server->raiseError(number, int(step.b), text);
        } else if (step.kind == Told) {
            qsizetype at = 0;
            for (std::size_t i = 0; i <= step.cuts.size() && world.client() == client; ++i) {
                const qsizetype size = i < step.cuts.size() ? step.cuts[i] : step.bytes.size() - at;
                client->feed(step.bytes.mid(at, size));
                at += size;
            }
        } else if (step.kind == Answered) {
            client->accept();
        } else if (step.kind == LinkError) {
            client->raiseError(int(step.b), text);
        } else if (step.kind == HangUp) {
            client->hangUp();
        }
    }

    void performOn(Port& port, const TStep& step)
    {
        if (step.kind == Feed) {
            qsizetype at = 0;
            for (std::size_t i = 0; i <= step.cuts.size() && this->port(step.a) == &port; ++i) {
                const qsizetype size = i < step.cuts.size() ? step.cuts[i] : step.bytes.size() - at;
                port.feed(step.bytes.mid(at, size));
                at += size;
            }
        } else if (step.kind == OpenPort) {
            port.Open();
        } else if (step.kind == ClosePort) {
            port.Close();
        } else if (step.kind == PortError) {
            World::portError(port, step.text.value(0), step.b, step.c != 0);
        } else if (step.kind == Fail) {
            (step.b == 0   ? port.OpenFailure
             : step.b == 1 ? port.CloseFailure
                           : port.WriteFailure) =
                step.text.isEmpty() ? std::nullopt : std::optional(step.text[0]);
        }
    }

    TStage& FStage;
    std::array<std::shared_ptr<Port>, kMostPorts> FPorts;
};

} // namespace tnv5::modelkit
