#pragma once

#include "sim/pos_terminal.h"

#include <QDBusVirtualObject>
#include <QProcess>
#include <QTemporaryDir>

namespace tnv5::sim {

/// A simulated terminal as an object on the bus, under the name of its library. It answers in its own time
/// and, where its scenario says so, ends its process or never answers.
class TPosOnBus final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    /// @param address of the bus
    /// @throws platform::Exception when the bus or the name cannot be had
    TPosOnBus(const QString& address, int type, const TPosScenario& scenario);
    ~TPosOnBus() override;
    Q_DISABLE_COPY_MOVE(TPosOnBus)

    TPosMachine& machine() { return FPos->machine; }
    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    bool handleProperty(const QDBusMessage& message, const QDBusConnection& connection);
    void answer(const QDBusMessage& message, const TPosReply& reply);
    void send(const TPosReply::TEvent& event);

    QString FBusName;
    QString FName;
    std::unique_ptr<TSimulatedPos> FPos;
};

/// A bus of its own, for as long as this lives: a `dbus-daemon` that ends with this process at the latest.
class TPrivateBus
{
public:
    /// @throws platform::Exception when it does not start
    TPrivateBus();
    ~TPrivateBus();
    Q_DISABLE_COPY_MOVE(TPrivateBus)

    QString address() const { return FAddress; }
    /// Ends it now.
    void stop();

private:
    QTemporaryDir FFolder;
    QProcess FDaemon;
    QString FAddress;
};

/// Lets a program that is about to be started end with this process.
void endWithUs(QProcess& program);

} // namespace tnv5::sim
