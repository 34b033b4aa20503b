#pragma once

#include "tnv5/controller/remote_role.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/component.h"
#include "tnv5/platform/sockets.h"
#include "tnv5/platform/timer.h"

#include <QVariant>
#include <array>
#include <memory>
#include <optional>

namespace tnv5::controller {

using platform::TComponent;
using platform::TLogEvent;

/// What the controller components share: the events and remote settings that they publish, the timer of their
/// table, the question to the host, and log, errors and reports with their echo to the monitor stream.
///
/// It publishes nothing itself, so that each component keeps its own order of properties. What differs
/// between the families - the sweep over the table, the rules of the check, the order of sending - stands in
/// the components; the differences of the remote roles are a row each in remote_role.h.
class TControllerDevice : public TComponent
{
    Q_OBJECT

public:
    ~TControllerDevice() override;

    /// One line of log.
    const TLogEvent& OnLog() const { return FLogEvent; }
    void SetOnLog(TLogEvent Value) { FLogEvent = std::move(Value); }
    /// One error: a code in square brackets, a blank and a text.
    const TLogEvent& OnError() const { return FErrorEvent; }
    void SetOnError(TLogEvent Value) { FErrorEvent = std::move(Value); }

    /// Address of the remote server, and the port that server and clients meet on; 0 at first.
    QString Server() const { return FServer; }
    void SetServer(const QString& Value);
    int Port() const { return Fport; }
    void SetPort(int Value);
    /// Remote mode; `podNone` at first. Nothing is opened here: sockets open when there is something to say.
    TConState RemoutDevice() const { return FRemoutDevice; }
    void SetRemoutDevice(TConState Value);

    /// Whom the server lets in; as it is, every program of this machine. Closes the server's socket.
    /// @throws EConvertError for an address or a network that is none
    void SetServerAccess(const platform::TServerAccess& Value);
    /// Files of a protected link to the server; as it is, the link is plain. Closes the client's socket.
    void SetClientTls(const std::optional<platform::TTlsFiles>& Value);
    /// The port that the server listens on, which the system has chosen when `Port` is 0; 0 while it does
    /// not.
    int ListeningPort() const;
    /// Workstations that are connected to this server.
    int Watchers() const;

    /// Readiness of the mode in use. Asking opens what the mode needs: the server's socket ("[06] " when it
    /// cannot be opened), or the client's ("[01] "), which is not ready before it is connected.
    bool Connected();

    /// Handles one line of a controller, start character included, carriage return excluded.
    virtual void p_hw_ProtocolIn(const QString& AMess) = 0;

    /// One sweep over the table.
    virtual void p_hw_CallStackArray() = 0;

protected:
    TControllerDevice(QObject* AOwner, const TRemoteFamily& family, int sweepIntervalMs);

    /// Interval of the sweeps; keeps the timer running or stopped.
    void setSweepInterval(int ms);
    /// Starts the timer of the sweeps, unless it runs, and sweeps once at once.
    void startSweeps();
    void stopSweeps();

    /// The mode as it acts: numbers that are no mode count as `podNone`.
    TConState role() const;
    /// A client shows a status of its server; the fields of its family. A family whose clients drop them has
    /// none.
    virtual void showServerStatus(const QStringList& fields) { Q_UNUSED(fields) }
    /// Whether the line to the controllers is open; may open it.
    virtual bool lineReady() = 0;

    /// Sends a text to the monitor stream: a server's to all its clients, a client's to its server if its
    /// family does that. Does nothing stand-alone.
    void sendToMonitor(const QByteArray& text);
    void echo(const QString& text);
    /// Whether a text would go to the monitor stream at all.
    bool echoes() const { return role() == podServer || (role() == PodClient && FFamily.clientSendsTexts); }
    /// Sends a text to the server. @return false when there is no link to it
    bool sendToServer(const QByteArray& text);

    void log(const QString& prefix, const QString& text);
    void reportError(QStringView code, const QString& text);

    /// Calls a status handler with fields that were copied before; what it raises is reported with `code`.
    template <class Event, std::size_t Count>
    void show(TComponent* sender, const Event& event, QStringView code,
              const std::array<QVariant, Count>& fields)
    {
        if (const auto handler = event) {
            Attempt([&] { std::apply([&](const auto&... field) { handler(sender, field...); }, fields); },
                    [&](const QString& message) { reportError(code, message); });
        }
    }

    /// A status report: to the status handler, then to the monitor stream. The fields are copied once: the
    /// handler may change the record that they stand in, and the monitor gets the same values.
    template <class Event, class... Fields>
    void reportStatus(const Event& event, QStringView code, const Fields&... fields)
    {
        if (!event && !echoes()) {
            return;
        }
        const std::array<QVariant, sizeof...(Fields)> values{QVariant(fields)...};
        show(this, event, code, values);
        if (echoes()) {
            echoStatus(values.data(), values.size());
        }
    }

    /// Asks the host: calls `event` with the arguments and a result preset to `preset`.
    /// @return the result; `withoutHandler` when nobody is there to ask. Read it with `VariantToInteger`.
    /// @throws what the handler throws
    template <class Event, class... Args>
    QVariant ask(const Event& event, int withoutHandler, int preset, Args&&... args)
    {
        if (!event) {
            return withoutHandler;
        }
        QVariant result = preset;
        Fire(event, std::forward<Args>(args)..., result);
        return result;
    }

    bool IDBusy = false; // a sweep is running
    TLogEvent FLogEvent;
    TLogEvent FErrorEvent;

private:
    void makeSockets();
    void listenTo(platform::TServerSocket& server);
    void listenTo(platform::TClientSocket& client);
    void ServerRead(const QByteArray& bytes);
    void ClientRead(const QByteArray& bytes);
    void ClientSocketError(platform::TSocketFailure& failure);
    void logVisitor(const QString& text, const platform::TServerConnection& visitor);
    void reportRefused(const QString& address, const QString& reason);
    bool ready();
    void echoStatus(const QVariant* fields, std::size_t count);

    const TRemoteFamily& FFamily;
    std::unique_ptr<platform::TTimer> StackTime;
    std::unique_ptr<platform::TServerSocket> DeviceServer;
    std::unique_ptr<platform::TClientSocket> DeviceClient;
    QString FServer;
    int Fport = 0;
    TConState FRemoutDevice = podNone;
    platform::TDateTime FRefusedTold = 0;
    int FRefusedUntold = 0;
};

} // namespace tnv5::controller
