// A process with an automation object on a bus, "Test.Object": whatever a library may do to its caller.
// Usage: bus_object ADDRESS

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTimer>
#include <cstdio>
#include <map>
#include <unistd.h>

namespace {

const QString kName = QStringLiteral("Test.Object");
const QString kPath = QStringLiteral("/Test/Object");

class TBusObject final : public QDBusVirtualObject
{
public:
    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const QVariantList in = message.arguments();
        const QString method = message.member();
        if (message.interface() == u"org.freedesktop.DBus.Properties") {
            return property(message, bus);
        }
        if (method == u"Add") {
            bus.send(message.createReply(in.value(0).toInt() + in.value(1).toInt()));
        } else if (method == u"Swap") { // the arguments by reference come back changed
            bus.send(message.createReply({QStringLiteral("swapped"), in.value(1), in.value(0)}));
        } else if (method == u"Echo") {
            bus.send(message.createReply(in));
        } else if (method == u"Types") {
            bus.send(message.createReply({qulonglong(5), uint(7), short(-3), uchar(9), qulonglong(1) << 63,
                                          QVariant::fromValue(QDBusVariant(true)),
                                          QVariant::fromValue(QDBusObjectPath("/a/b")), 4'000'000'000u}));
        } else if (method == u"Odd") {
            bus.send(message.createReply(QStringList{"a", "b"}));
        } else if (method == u"Nothing") {
            bus.send(message.createReply());
        } else if (method == u"Fail") {
            bus.send(
                message.createErrorReply(QStringLiteral("Test.Trouble"), QStringLiteral("немає паперу")));
        } else if (method == u"FailSilently") {
            bus.send(message.createErrorReply(QStringLiteral("Test.Trouble"), QString()));
        } else if (method == u"Tell") {
            for (const int number : {1, 2}) {
                QDBusMessage signal = QDBusMessage::createSignal(kPath, kName, QStringLiteral("Progress"));
                signal << number << QStringLiteral("text");
                bus.send(signal);
            }
            bus.send(message.createReply());
        } else if (method == u"Slowly") {
            message.setDelayedReply(true);
            QTimer::singleShot(in.value(0).toInt(), this,
                               [=] { QDBusConnection(bus).send(message.createReply(1)); });
        } else if (method == u"Die") {
            _exit(1);
        } else {
            return false;
        }
        return true;
    }

private:
    bool property(const QDBusMessage& message, const QDBusConnection& bus)
    {
        const QString name = message.arguments().value(1).toString();
        if (message.member() == u"Set") {
            FValues[name] = message.arguments().value(2).value<QDBusVariant>().variant();
            bus.send(message.createReply());
        } else if (FValues.count(name) == 0) {
            bus.send(message.createErrorReply(QDBusError::UnknownProperty, QStringLiteral("no ") + name));
        } else {
            bus.send(message.createReply(QVariant::fromValue(QDBusVariant(FValues[name]))));
        }
        return true;
    }

    std::map<QString, QVariant> FValues{{QStringLiteral("RESP_CONFIRM"), 3},
                                        {QStringLiteral("Version"), QStringLiteral("1.0")}};
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QDBusConnection bus =
        QDBusConnection::connectToBus(QString::fromLocal8Bit(argv[1]), QStringLiteral("own"));
    TBusObject object;
    if (!bus.registerVirtualObject(kPath, &object) || !bus.registerService(kName)) {
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
