#include "model/kit/controller_model.h"

namespace tnv5::modelkit {

bool TModelController::ready()
{
    if (mode() == Server) {
        if (!FDesigning && !FListening) {
            attempt(
                [&] {
                    FFarEnd.listen();
                    FListening = true;
                },
                [&](const QString& failure) {
                    hit<"remote: no listening">();
                    error("[06] " + failure);
                });
        }
        const bool open = lineOpen();
        return either<"remote: server ready", "remote: server not ready">(open && FListening);
    }
    if (mode() != Client) {
        return lineOpen();
    }
    if (!FDesigning && !FLinked && !FDialling) {
        attempt(
            [&] {
                const bool linked = FFarEnd.dial();
                FLinked = linked;
                FDialling = !linked;
            },
            [&](const QString& failure) {
                hit<"remote: no dialling">();
                error("[01] " + failure);
            });
    }
    return either<"remote: linked", "remote: not linked">(FLinked);
}

void TModelController::toMonitor(const QByteArray& text)
{
    if (mode() == Server && ready()) {
        attempt([&] { FFarEnd.toClient(text); },
                [&](const QString& failure) {
                    hit<"remote: a send failed">();
                    error("[07] " + failure);
                });
    } else if (mode() == Client && FClientSends) {
        toServer(text);
    }
}

bool TModelController::toServer(const QByteArray& text)
{
    if (!ready()) {
        return false;
    }
    attempt([&] { FFarEnd.toServer(text); },
            [&](const QString& failure) {
                hit<"remote: forwarding failed">();
                error("[01] " + failure);
            });
    return true;
}

void TModelController::changed(const std::string& property)
{
    const bool port = property == "Port";
    if (!port && property != "RemoutDevice") {
        return;
    }
    if (port || mode() != Server) {
        FListening = false;
    }
    if (port || mode() != Client) {
        FLinked = false;
        FDialling = false;
    }
}

} // namespace tnv5::modelkit
