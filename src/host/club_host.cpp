#include "tnv5/host/club_host.h"

namespace tnv5::host {

namespace {

constexpr qsizetype kAddressLength = 3; // of a channel on the line; other gates have other controllers

QStringList classicGates(TDatabase& database)
{
    QStringList addresses;
    for (const TGate& gate : database.gates()) {
        if (gate.address.size() == kAddressLength) {
            addresses.append(gate.address);
        }
    }
    return addresses;
}

} // namespace

TClubHost::TClubHost(turnstile::TTurnStylerDevice& device, TDatabase& database)
    : FDesk(database), FLine(device, FDesk)
{
    FLine.addGates(classicGates(database));
    FDesk.OnPass = [this](const TPass& pass) {
        if (OnPass) {
            OnPass(pass);
        }
    };
    FDesk.OnTrouble = [this](const QString& text) {
        if (OnTrouble) {
            OnTrouble(text);
        }
    };
}

TClubHost::~TClubHost()
{
    close();
}

void TClubHost::close()
{
    FLine.close();
    FDesk.close();
}

} // namespace tnv5::host
