#pragma once

#include "model/kit/branches.h"

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What a component stands on, told once more and as plainly as possible, without any of the module's code:
/// failures, time and ticks, a port in memory, a packet splitter, and the manners towards a host that raises,
/// re-enters or destroys.
namespace tnv5::modelkit {

enum class ERaise { Exception, Abort, Standard, Unknown };

/// What a host or a port raised.
struct TFailure
{
    QString text;
    ERaise kind = ERaise::Exception;
};

/// Thrown inside a model once it is gone, so that nothing of it is touched any more.
struct TGone
{
};

class TModelWorld;
class TModelServer;
class TModelClient;

/// A timer: every `Interval` ms while it is enabled, never for an interval below 1.
class TModelTimer
{
public:
    TModelTimer(TModelWorld& world, int interval, std::function<void()> tick);
    ~TModelTimer();
    Q_DISABLE_COPY_MOVE(TModelTimer)

    bool enabled() const { return FEnabled; }
    void setEnabled(bool value);
    void setInterval(int ms);

private:
    friend class TModelClock;
    void arm();

    TModelWorld& FWorld;
    int FInterval;
    bool FEnabled = false;
    std::optional<qint64> FDue;
    std::function<void()> FTick;
};

class TModelClock
{
public:
    qint64 nowMs() const { return FNow; }
    qint64 timeOfDay() const { return FNow % 86'400'000; }
    /// Fires what falls due, the earliest first, ties in order of creation.
    void advance(qint64 ms);
    void jumpTo(qint64 ms);
    /// What happens while an operation waits with the message loop running.
    std::function<void()> OnWait;

private:
    friend class TModelTimer;
    qint64 FNow = 0;
    std::vector<TModelTimer*> FTimers;
};

class TModelPort;

/// Cuts what a port reads into packets: by a start and a stop string, or where a handler says.
class TModelSplitter
{
public:
    /// Sets a position counted from 1; -1 leaves it to the string, 0: not found.
    using TAsk = std::function<void(const QByteArray& buffer, qsizetype& position)>;

    TModelSplitter(TModelWorld& world, std::function<void(const QByteArray& packet)> onPacket)
        : FWorld(world), FOnPacket(std::move(onPacket))
    {
    }
    QByteArray Start;
    QByteArray Stop = "\r";
    TAsk OnStart;
    TAsk OnStop;

    void attach(TModelPort* port);
    bool attachedTo(const TModelPort* port) const { return FPort == port; }
    void append(const QByteArray& bytes);

private:
    struct TAnswer
    {
        qsizetype position = -1;
        bool obsolete = false; // the buffer was emptied while the handler ran
    };
    bool step();
    bool takePacket();
    void hand(const QByteArray& packet);
    TAnswer ask(const TAsk& handler);

    TModelWorld& FWorld;
    std::function<void(const QByteArray&)> FOnPacket;
    TModelPort* FPort = nullptr;
    QByteArray FBuffer;
    bool FInside = false;
    qsizetype FStartLength = -1; // of the string that began the packet; -1: a handler did
    bool FAsking = false;
    int FDelivering = 0;
    int FAttachments = 0;
};

/// The in-memory port's twin; its names are the port's.
class TModelPort
{
public:
    explicit TModelPort(TModelWorld& world) : FWorld(world) {}

    bool Connected() const { return FOpen; }
    void Open();
    void Close();
    void Write(const QByteArray& bytes);
    void feed(const QByteArray& bytes);
    void raiseError(const QString& message, qint64 osError);
    void raiseErrorInside(const QString& message, qint64 osError);

    /// Settings that a port only keeps.
#define TNV5_SETTING(type, name, initial)                                                                    \
    type name() const                                                                                        \
    {                                                                                                        \
        return F##name;                                                                                      \
    }                                                                                                        \
    void Set##name(type value)                                                                               \
    {                                                                                                        \
        F##name = value;                                                                                     \
    }                                                                                                        \
    type F##name = initial;
    TNV5_SETTING(QString, Port, "MEMORY")
    TNV5_SETTING(int, BaudRate, 9600)
    TNV5_SETTING(int, DataBits, 8)
    TNV5_SETTING(int, Parity, 0)
    TNV5_SETTING(int, StopBits, 0)
    TNV5_SETTING(int, ReadGap, 0)
#undef TNV5_SETTING
    std::optional<QString> OpenFailure, CloseFailure, WriteFailure;
    std::function<void()> OnOpening, OnClosing, OnWriting;
    std::function<void(const QByteArray&)> OnWritten;
    std::function<void(const QString& message, qint64 osError)> OnException;
    const void* TakenBy = nullptr; ///< who has assigned `OnException` last

    /// Destroyed; the memory stays for calls under way.
    void die()
    {
        FDead = true;
    }
    bool dead() const
    {
        return FDead;
    }

private:
    friend class TModelSplitter;
    template <class... Args>
    bool outlives(const std::function<void(Args...)>& hook, const Args&... args);
    struct TRead
    {
        QByteArray bytes;
        std::vector<TModelSplitter*> splitters; // those attached when it came
        std::size_t next = 0;
    };

    TModelWorld& FWorld;
    bool FOpen = false;
    bool FDead = false;
    std::vector<TModelSplitter*> FSplitters;
    std::deque<TRead> FReads;
};

/// Null for what is gone, as a pointer that a component holds.
template <class Thing>
Thing* living(Thing* thing)
{
    return thing != nullptr && !thing->dead() ? thing : nullptr;
}

/// All that the models of one scenario share. What was destroyed stays until its end.
class TModelWorld
{
public:
    using Port = TModelPort;
    static constexpr bool isModel = true;

    TModelWorld(qint64 startMs, bool cyrillic, std::function<void(const QString&)> unhandled);

    TModelClock clock;
    const bool cyrillic;

    std::shared_ptr<Port> makePort() { return keep(std::make_shared<Port>(*this)); }
    static void destroy(std::shared_ptr<Port>& port) { std::exchange(port, nullptr)->die(); }
    template <class Model, class... Args>
    std::shared_ptr<Model> make(bool designing, Args&&... args)
    {
        return keep(std::make_shared<Model>(*this, designing, std::forward<Args>(args)...));
    }
    template <class Model>
    static void destroy(std::shared_ptr<Model>& model)
    {
        std::exchange(model, nullptr)->die();
    }

    static void portError(Port& port, const QString& message, qint64 osError, bool inside)
    {
        inside ? port.raiseErrorInside(message, osError) : port.raiseError(message, osError);
    }
    [[noreturn]] static void raise(ERaise kind, const QString& text);
    /// What is being handled: its text, and whether a host may raise the like.
    static QString caught();

    /// Sockets of the one controller that has some; nullptr: there are none.
    TModelServer* server() const { return FServer; }
    TModelClient* client() const { return FClient; }
    void setSockets(TModelServer* server, TModelClient* client)
    {
        FServer = server;
        FClient = client;
    }

    /// The exception being handled has reached the event loop.
    void report() const;
    /// Runs what enters from the event loop.
    template <class Body>
    void guarded(Body&& body) const
    {
        try {
            body();
        } catch (...) {
            report();
        }
    }

private:
    template <class Thing>
    std::shared_ptr<Thing> keep(std::shared_ptr<Thing> thing)
    {
        FKept.push_back(thing);
        return thing;
    }

    std::function<void(const QString&)> FUnhandled;
    std::vector<std::shared_ptr<void>> FKept;
    TModelServer* FServer = nullptr;
    TModelClient* FClient = nullptr;
};

/// Base of every component's model: the manners towards its host.
class TModel
{
public:
    TModel(TModelWorld& world, bool designing) : FWorld(world), FDesigning(designing) {}
    virtual ~TModel() = default;
    Q_DISABLE_COPY_MOVE(TModel)

    /// Destroyed, perhaps inside one of its own handlers: what is under way ends quietly. The memory stays.
    virtual void die() { FDead = true; }
    bool dead() const { return FDead; }

    /// Published properties that only hold a value.
    void setProperty(const char* name, const QVariant& value)
    {
        FProperties.at(name) = value;
        changed(name);
    }
    QVariant property(const char* name) const { return FProperties.at(name); }

protected:
    /// A property was written, perhaps with the value that it had.
    virtual void changed(const std::string& /*property*/) {}
    /// Runs code of the host's, or what may run some. @throws TGone when that destroyed the model
    template <class Body>
    void callOut(Body&& body)
    {
        try {
            body();
        } catch (...) {
            if (!FDead) {
                throw;
            }
            hit<"destroyed by a handler that raises">();
            FWorld.report();
        }
        if (FDead) {
            hit<"destroyed by a handler">();
            throw TGone();
        }
    }
    /// The same, and hands the text of what it raises to `failed`.
    template <class Body, class Failed>
    void attempt(Body&& body, Failed&& failed)
    {
        std::optional<QString> message;
        try {
            callOut(body);
        } catch (const TFailure& failure) {
            message = failure.text;
        }
        if (message) {
            failed(*message);
        }
    }
    /// Runs a method that the host calls; one that outlives the model ends quietly, with a result of its own.
    template <class Body, class Result>
    static Result operation(Body&& body, Result ifGone)
    {
        try {
            return body();
        } catch (const TGone&) {
            hit<"an operation ends quietly">();
            return ifGone;
        }
    }
    template <class Body>
    static void operation(Body&& body)
    {
        operation([&] { return body(), true; }, false);
    }
    /// Calls a handler that is assigned.
    template <class Handler, class Self, class... Args>
    void fire(const Handler& event, Self* self, Args&&... args)
    {
        if (const Handler handler = event) {
            callOut([&] { handler(self, args...); });
        }
    }

    TModelWorld& FWorld;
    const bool FDesigning;
    bool FDead = false;
    std::map<std::string, QVariant> FProperties;
};

} // namespace tnv5::modelkit
