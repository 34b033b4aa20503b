#pragma once

#include "bench/program.h"
#include "tnv5/platform/serial_port.h"

#include <QCoreApplication>
#include <QFile>
#include <QSet>

namespace tnv5::bench {

/// The cards of a file, one a line.
inline QSet<QString> loadCards(const QString& path)
{
    QSet<QString> cards;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            cards.insert(QString::fromLatin1(file.readLine().trimmed()));
        }
    }
    return cards;
}

/// A gate whose latency is measured: NAME PORT CARDS. Opens for the cards in the file CARDS (one card a line)
/// and refuses all others. Prints "ready" when the port is open.
/// @param Gate made of the port, which is still closed, and the cards
template <class Gate>
int runGate(const char* name, int argc, char** argv)
{
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop: the shorter way from the port to the program
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: %s PORT CARDS\n", name);
        return 2;
    }
    return runProgram(name, [&] {
        const QSet<QString> cards = loadCards(arguments[2]);
        platform::TSerialPort port;
        port.SetPort(arguments[1]);
        const Gate gate(port, cards);
        port.Open();
        std::puts("ready");
        std::fflush(stdout);
        return QCoreApplication::exec();
    });
}

} // namespace tnv5::bench
