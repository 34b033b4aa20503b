#pragma once

#include "support/recorder.h"
#include "tnv5/controller/controller_device.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/testing/memory_network.h"

namespace tnv5::tests {

/// The controller becomes a server with one client; what the client gets is recorded as "echo TEXT", or with
/// another word.
/// @param network the one that the controller was made in, as its first component
inline void serve(testkit::TMemoryNetwork& network, controller::TControllerDevice& controller,
                  TRecorder& trace, const QString& word = QStringLiteral("echo "))
{
    controller.SetRemoutDevice(controller::podServer);
    controller.Connected(); // opens the socket
    const platform::TLogEvent log = controller.OnLog();
    controller.SetOnLog(nullptr); // the arrival is in no transcript
    network.server(0).join();
    controller.SetOnLog(log);
    network.server(0).OnSent = [&trace, word](int, const QByteArray& bytes) {
        trace.add(word + platform::fromWire(bytes));
    };
}

/// The controller becomes a client; what its server gets is recorded as "forward TEXT", or with another
/// word.
inline void follow(testkit::TMemoryNetwork& network, controller::TControllerDevice& controller,
                   TRecorder& trace, const QString& word = QStringLiteral("forward "))
{
    controller.SetRemoutDevice(controller::PodClient);
    network.client(0).OnSent = [&trace, word](const QByteArray& bytes) {
        trace.add(word + platform::fromWire(bytes));
    };
}

} // namespace tnv5::tests
