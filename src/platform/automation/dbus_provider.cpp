#include "tnv5/platform/automation/dbus_provider.h"

#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/automation/dbus_object.h"
#include "tnv5/platform/automation/dbus_value.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFile>
#include <optional>

namespace tnv5::platform::automation {

namespace {

/// Everybody's connection to the bus in use.
class TBus
{
public:
    static TBus& current()
    {
        static TBus bus;
        return bus;
    }

    void choose(const std::string& address)
    {
        if (!FName.isEmpty()) {
            QDBusConnection::disconnectFromBus(FName);
        }
        FAddress = QString::fromStdString(address);
        FName = FAddress.isEmpty() ? QString() : QStringLiteral("tnv5-automation-%1").arg(++FNumber);
    }

    /// None when there is no bus.
    std::optional<QDBusConnection> connection() const
    {
        if (FName.isEmpty() && !sessionIsThere()) {
            return {};
        }
        const QDBusConnection bus =
            FName.isEmpty() ? QDBusConnection::sessionBus() : QDBusConnection::connectToBus(FAddress, FName);
        return bus.isConnected() ? std::optional(bus) : std::nullopt;
    }

private:
    // asked before the library is, which would start a bus of its own
    static bool sessionIsThere()
    {
        return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
               QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    }

    QString FAddress;
    QString FName;
    int FNumber = 0;
};

/// A bus that has just ended may still count as connected.
bool isGone(const QDBusError& error)
{
    return error.type() == QDBusError::Disconnected || error.type() == QDBusError::NoReply ||
           error.type() == QDBusError::NoServer;
}

class TDBusProvider final : public TAutomationProvider
{
public:
    TObjectPtr create(std::u16string_view progId, std::u16string& why) override
    {
        const std::optional<QDBusConnection> bus = TBus::current().connection();
        if (!bus) {
            why = u"no class of this process, and there is no bus";
            return nullptr;
        }
        const QString name = busNameOf(progId);
        if (!bus->interface()->isServiceRegistered(name)) {
            bus->interface()->startService(name);
        }
        const QDBusReply<QString> owner = bus->interface()->serviceOwner(name);
        if (!owner.isValid() || owner.value().isEmpty()) {
            why = bus->isConnected() && !isGone(owner.error())
                      ? u"no class of this process, and nobody on the bus"
                      : u"no class of this process, and there is no bus";
            return nullptr;
        }
        return std::make_shared<TDBusObject>(*bus, name, owner.value());
    }
};

} // namespace

TAutomationProvider& systemProvider()
{
    static TDBusProvider provider;
    return provider;
}

void setAutomationBus(const std::string& address)
{
    TBus::current().choose(address);
}

} // namespace tnv5::platform::automation
