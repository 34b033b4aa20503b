#pragma once

#include "apps/tnv5/demo_bar.h"
#include "apps/tnv5/demo_counter.h"
#include "apps/tnv5/demo_lamps.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/host/club_desk.h"
#include "tnv5/host/local/local_server.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace tnv5::cli {

/// What of the demo's club those see and do who talk to it over its local socket. It hears every line that is
/// printed while it lives.
class TDemoDesk final : public host::IClubControl
{
public:
    /// Parts of the demo; all of them outlive the desk.
    struct TClub
    {
        host::TDatabase& books;
        host::TClubDesk& desk;
        turnstile::TTurnStylerDevice& line;
        const platform::TSerialPort& linePort;
        d24::TTurnStylerDeviceD24& boards;
        connector::TDeviceConnector& connector;
        const platform::TSerialPort& boardPort;
        TDemoCounter& fruit;
        TDemoBar& bar;
        TDemoLamps& lamps;
    };

    /// @throws platform::Exception when the socket cannot be opened
    TDemoDesk(const TClub& club, const QString& socket);
    ~TDemoDesk() override;

    QString socket() const { return FServer->path(); }
    void onPass(const host::TPass& pass);

    QJsonObject state() override;
    QString open(const QString& gate, const QString& who, const QString& reason) override;
    QString reload() override;
    QByteArray picture(const QString& card) override;
    QJsonArray journal(qint64 after, int limit) override;

private:
    struct TLineState
    {
        bool open = false;
        platform::TDateTime since = 0;
    };

    QJsonObject lineState(const QString& name, const platform::TSerialPort& port);
    QJsonArray gateStates();
    QJsonArray boardStates() const;
    QString zoneOf(const QString& gate) const { return FGates.value(gate).zone; }
    void hear(const QString& line, bool complaint);

    TClub FClub;
    const platform::TDateTime FStarted;
    QMap<QString, host::TGate> FGates;
    QMap<QString, TLineState> FLines;
    QMap<QString, QByteArray> FPictures; // by card
    std::unique_ptr<host::TLocalServer> FServer;
};

} // namespace tnv5::cli
