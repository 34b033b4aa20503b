#include "tnv5/platform/automation/dbus_object.h"

#include "tnv5/platform/automation/dbus_value.h"
#include "tnv5/platform/errors.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QEventLoop>

namespace tnv5::platform::automation {

namespace {

/// So much longer than a library may take: its own end of waiting comes first.
constexpr std::chrono::milliseconds kGrace{5'000};
constexpr std::chrono::milliseconds kPropertyLimit{10'000};

const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QStringList kNoMethod = {QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
                               QStringLiteral("org.freedesktop.DBus.Error.UnknownInterface")};

} // namespace

TDBusObject::TDBusObject(const QDBusConnection& bus, const QString& name, const QString& owner)
    : FBus(bus), FName(name), FOwner(owner)
{
}

TValue TDBusObject::call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds limit)
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

TValue TDBusObject::get(std::u16string_view name)
{
    TArguments none;
    return valuesOf(send(kProperties, u"Get", {FName, toQt(name)}, kPropertyLimit), none, kPropertyLimit);
}

void TDBusObject::put(std::u16string_view name, const TValue& value)
{
    TArguments none;
    const QVariant wrapped = QVariant::fromValue(QDBusVariant(toBus(value)));
    valuesOf(send(kProperties, u"Set", {FName, toQt(name), wrapped}, kPropertyLimit), none, kPropertyLimit);
}

void TDBusObject::setEventHandler(TEventHandler handler)
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

void TDBusObject::onSignal(const QDBusMessage& message)
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

QDBusMessage TDBusObject::send(const QString& interface, std::u16string_view method,
                               const QVariantList& values, std::chrono::milliseconds limit)
{
    QDBusMessage message = QDBusMessage::createMethodCall(FOwner, pathOf(FName), interface, toQt(method));
    message.setArguments(values);
    message.setAutoStartService(false);
    const QDBusPendingCall pending = FBus.asyncCall(message, static_cast<int>((limit + kGrace).count()));
    QDBusPendingCallWatcher watcher(pending);
    if (QCoreApplication::instance() != nullptr && !watcher.isFinished()) {
        // not QDBus::BlockWithGui, which waits for ever when the answer comes just before its loop
        QEventLoop loop;
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    watcher.waitForFinished(); // where there is no loop, or the program is about to end
    // Signals that came before the answer: where the answer was there at once, no loop has handed them on.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    return watcher.reply();
}

TValue TDBusObject::valuesOf(const QDBusMessage& reply, TArguments& arguments,
                             std::chrono::milliseconds limit) const
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

std::u16string TDBusObject::trouble(const QDBusMessage& reply, std::chrono::milliseconds limit) const
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

} // namespace tnv5::platform::automation
