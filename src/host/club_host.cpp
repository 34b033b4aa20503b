#include "tnv5/host/club_host.h"

namespace tnv5::host {

namespace {

constexpr qsizetype kAddressLength = 3; // of a channel on the line; other gates have other controllers

} // namespace

TClubHost::TClubHost(turnstile::TTurnStylerDevice& device, TDatabase& database)
    : FDevice(&device), FDesk(database)
{
    QStringList addresses = device.DeviceList();
    for (const TGate& gate : database.gates()) {
        if (gate.address.size() == kAddressLength && !addresses.contains(gate.address)) {
            addresses.append(gate.address);
        }
    }
    device.SetDeviceList(addresses);
    device.SetTimerInterval(kPassIntervalMs);

    device.SetOnCheckSQL([this](platform::TComponent*, const QVariant& address, const QVariant& card,
                                const QVariant&, QImage&, const QVariant& mode, QVariant& result) {
        onCheck(address.toString(), card.toString(), mode.toInt(), result);
    });
    device.SetOnGetImg(
        [this](platform::TComponent*, const QString& address, QImage& image) { onImage(address, image); });
    device.SetOnError([this](platform::TComponent*, const QString& text) { FDesk.trouble(text); });

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
    if (FDevice) {
        FDevice->SetOnCheckSQL({});
        FDevice->SetOnGetImg({});
        FDevice->SetOnError({});
        FDevice.clear();
    }
    FDesk.close();
}

void TClubHost::onCheck(const QString& address, const QString& card, int mode, QVariant& result)
{
    if (mode == turnstile::cmOpen) {
        result = int(FDesk.decideNew(address, card).opened());
    } else if (const auto ending = endingOf(mode)) {
        result = 1;
        FDesk.endPass(address, card, *ending);
    }
}

void TClubHost::onImage(const QString& address, QImage& image)
{
    if (const turnstile::PRFidInfo record = FDevice->StackItem(FDevice->p_hw_FindDevice(address))) {
        image = FDesk.pictureFor(record->CardNumber);
    }
}

} // namespace tnv5::host
