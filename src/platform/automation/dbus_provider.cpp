#include "tnv5/platform/automation/dbus_provider.h"

#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/automation/dbus_value.h"
#include "tnv5/platform/errors.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QFile>
#include <optional>

namespace tnv5::platform::automation {

namespace {

/// So much longer than a library may take: its own end of waiting comes first.
constexpr std::chrono::milliseconds kGrace{5'000};
constexpr std::chrono::milliseconds kPropertyLimit{10'000};

const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QStringList kNoMethod = {QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
                               QStringLiteral("org.freedesktop.DBus.Error.UnknownInterface")};

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

class TDBusObject final : public QObject, public TAutomationObject
{
    Q_OBJECT

public:
    /// @param owner the process that has the name now
    TDBusObject(const QDBusConnection& bus, const QString& name, const QString& owner)
        : FBus(bus), FName(name), FOwner(owner)
    {
    }

    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit) override
    {
        QVariantList values;
        for (const TArgument& argument : arguments) {
            values << toBus(argument.value);
        }
        const QDBusMessage reply = send(FName, name, values, limit);
        if (arguments.empty() && kNoMethod.contains(reply.errorName())) {
            const QDBusMessage property = send(kProperties, u"Get", {FName, toQt(name)}, kPropertyLimit);
            if (property.type() == QDBusMessage::ReplyMessage) {
                return valuesOf(property, arguments, kPropertyLimit);
            }
        }
        return valuesOf(reply, arguments, limit);
    }

    TValue get(std::u16string_view name) override
    {
        TArguments none;
        return valuesOf(send(kProperties, u"Get", {FName, toQt(name)}, kPropertyLimit), none, kPropertyLimit);
    }

    void put(std::u16string_view name, const TValue& value) override
    {
        TArguments none;
        const QVariant wrapped = QVariant::fromValue(QDBusVariant(toBus(value)));
        valuesOf(send(kProperties, u"Set", {FName, toQt(name), wrapped}, kPropertyLimit), none,
                 kPropertyLimit);
    }

    void setEventHandler(TEventHandler handler) override
    {
        FHandler = std::move(handler);
        if (FHandler && !FListening) {
            FListening =
                FBus.connect(FOwner, pathOf(FName), FName, QString(), this, SLOT(onSignal(QDBusMessage)));
            if (!FListening) {
                throw EOleError(FName.toStdU16String() + u": no events can be had");
            }
        }
    }

private Q_SLOTS:
    void onSignal(const QDBusMessage& message)
    {
        const TEventHandler handler = FHandler; // it may end itself
        if (!handler) {
            return;
        }
        guarded([&] {
            TArguments arguments;
            const QVariantList values = message.arguments();
            for (const QVariant& value : values) {
                arguments.emplace_back(fromBus(value));
            }
            handler(message.member().toStdU16String(), arguments);
        });
    }

private:
    QDBusMessage send(const QString& interface, std::u16string_view method, const QVariantList& values,
                      std::chrono::milliseconds limit) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(FOwner, pathOf(FName), interface, toQt(method));
        message.setArguments(values);
        message.setAutoStartService(false);
        const auto mode = QCoreApplication::instance() != nullptr ? QDBus::BlockWithGui : QDBus::Block;
        return FBus.call(message, mode, static_cast<int>((limit + kGrace).count()));
    }

    TValue valuesOf(const QDBusMessage& reply, TArguments& arguments, std::chrono::milliseconds limit) const
    {
        if (reply.type() != QDBusMessage::ReplyMessage) {
            throw EOleError(trouble(reply, limit));
        }
        const QVariantList values = reply.arguments();
        qsizetype next = 1;
        for (TArgument& argument : arguments) {
            if (argument.byReference && next < values.size()) {
                argument.value = fromBus(values[next++]);
            }
        }
        return values.isEmpty() ? TValue() : fromBus(values[0]);
    }

    std::u16string trouble(const QDBusMessage& reply, std::chrono::milliseconds limit) const
    {
        static const QStringList kSilence = {QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
                                             QStringLiteral("org.freedesktop.DBus.Error.Timeout"),
                                             QStringLiteral("org.freedesktop.DBus.Error.TimedOut"),
                                             QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"),
                                             QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner"),
                                             QStringLiteral("org.freedesktop.DBus.Error.Disconnected")};
        QString text = reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorMessage();
        if (!FBus.isConnected()) {
            text = FName + QStringLiteral(": the bus is gone");
        } else if (kSilence.contains(reply.errorName())) {
            const bool alive = FBus.interface()->isServiceRegistered(FOwner);
            text = alive ? QStringLiteral("%1: no answer within %2 s").arg(FName).arg(limit.count() / 1000)
                         : FName + QStringLiteral(": the process behind it has ended");
        }
        return text.toStdU16String();
    }

    QDBusConnection FBus;
    QString FName;
    QString FOwner;
    TEventHandler FHandler;
    bool FListening = false;
};

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
        const QString owner = bus->interface()->serviceOwner(name);
        if (owner.isEmpty()) {
            why = u"no class of this process, and nobody on the bus";
            return nullptr;
        }
        return std::make_shared<TDBusObject>(*bus, name, owner);
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

#include "dbus_provider.moc"
