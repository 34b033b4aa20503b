// A working gate: every card of the list opens it, any other is refused.
// Usage: 01_gate /dev/ttyUSB0

#include <QCoreApplication>
#include <QSet>
#include <tnv5/answers/gate_answers.h>
#include <tnv5/platform/serial_port.h>

using namespace tnv5;

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QSet<QString> members = {QStringLiteral("12345678"), QStringLiteral("87654321")};

    platform::TSerialPort port;
    port.SetPort(QCoreApplication::arguments().value(1, QStringLiteral("/dev/ttyUSB0")));
    turnstile::TTurnStylerDevice gate;
    gate.SetComport(&port);
    answers::TGateAnswers answers(gate);
    answers.onCard([&members](const answers::TCardQuestion& question) {
        return members.contains(question.card) ? answers::TAnswer::open() : answers::TAnswer::refuse();
    });

    try {
        port.Open();
    } catch (const platform::EComPort& error) {
        qCritical("%s", qUtf8Printable(error.message()));
        return 1;
    }
    return QCoreApplication::exec();
}
