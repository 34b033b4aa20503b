// The turnstile component as a server of the monitor stream, for `fanout`.

#include "bench/audience.h"
#include "bench/program.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace tnv5::bench {

namespace {

// A text as a card makes them.
QString text()
{
    return QLatin1String(kTextMark) + QStringLiteral("%1").arg(nowNs(), kTimeDigits, 10, QLatin1Char('0')) +
           QStringLiteral(" %Read from port% $01AR12345678&");
}

void obey(turnstile::TTurnStylerDevice& gate)
{
    char order[16] = {};
    if (std::fgets(order, sizeof order, stdin) == nullptr) {
        QCoreApplication::quit();
    }
    for (int i = std::atoi(order); i > 0; --i) {
        gate.ServerEcho(text());
    }
}

int run(int argc, char** argv)
{
    raiseDescriptorLimit();
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    testkit::TMemoryPort port;
    port.Open();
    turnstile::TTurnStylerDevice gate;
    gate.SetOnError([](auto*, const QString& error) { std::fprintf(stderr, "%s\n", qUtf8Printable(error)); });
    gate.SetComport(&port);
    gate.SetRemoutDevice(controller::podServer);
    gate.Connected();
    std::printf("ready plain %d %d\n", gate.ListeningPort(), getpid());
    std::fflush(stdout);
    setvbuf(stdin, nullptr, _IONBF, 0); // what is read ahead would wake nobody
    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, [&gate] { obey(gate); });
    return QCoreApplication::exec();
}

} // namespace

} // namespace tnv5::bench

int main(int argc, char** argv)
{
    return tnv5::bench::runProgram("fanout_gate", [&] { return tnv5::bench::run(argc, argv); });
}
