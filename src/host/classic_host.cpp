#include "tnv5/host/classic_host.h"

#include "tnv5/common/messages.h"

namespace tnv5::host {

TClassicHost::TClassicHost(turnstile::TTurnStylerDevice& device, TClubDesk& desk)
    : FDevice(&device), FDesk(desk)
{
    device.SetTimerInterval(kPassIntervalMs);
    device.SetOnCheckSQL([this](platform::TComponent*, const QVariant& address, const QVariant& card,
                                const QVariant&, QImage&, const QVariant& mode, QVariant& result) {
        onCheck(address.toString(), card.toString(), mode.toInt(), result);
    });
    device.SetOnGetImg(
        [this](platform::TComponent*, const QString& address, QImage& image) { onImage(address, image); });
    device.SetOnError(
        [this](platform::TComponent*, const QString& text) { troubleFor(Keeping, FDesk, text); });
}

TClassicHost::~TClassicHost()
{
    close();
}

void TClassicHost::addGates(const QStringList& addresses)
{
    if (FDevice) {
        QStringList known = FDevice->DeviceList();
        known.append(addresses);
        known.removeDuplicates();
        FDevice->SetDeviceList(known);
    }
}

void TClassicHost::close()
{
    if (FDevice) {
        FDevice->SetOnCheckSQL({});
        FDevice->SetOnGetImg({});
        FDevice->SetOnError({});
        FDevice.clear();
    }
}

void TClassicHost::onCheck(const QString& address, const QString& card, int mode, QVariant& result)
{
    if (mode == turnstile::cmOpen) {
        result = int(decideFor(Keeping, FDesk, address, card).opened());
    } else if (const auto ending = endingOf(mode)) {
        result = 1;
        endFor(Keeping, FDesk, address, card, *ending);
    }
}

void TClassicHost::onImage(const QString& address, QImage& image)
{
    if (const turnstile::PRFidInfo record = FDevice->StackItem(FDevice->p_hw_FindDevice(address))) {
        image = FDesk.pictureFor(record->CardNumber);
    }
}

TPass decideFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& address, const QString& card)
{
    if (keeping.knows(address) || common::IsPseudoCard(card)) {
        return desk.decideNew(address, card);
    }
    troubleFor(keeping, desk,
               QStringLiteral("a card at %1 is refused: there is no such gate here").arg(address));
    TPass pass;
    pass.gate = address;
    pass.card = card;
    pass.refusal = TRefusal::UnknownGate;
    return pass;
}

void endFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& address, const QString& card,
            TEnding ending)
{
    if (keeping.knows(address) || common::IsPseudoCard(card) || desk.hasPass(address, card)) {
        desk.endPass(address, card, ending);
    }
}

void troubleFor(const TGateKeeping& keeping, TClubDesk& desk, const QString& text)
{
    if (keeping.OnTrouble) {
        keeping.OnTrouble(text);
    } else {
        desk.trouble(text);
    }
}

} // namespace tnv5::host
