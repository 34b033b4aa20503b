#include "tnv5/host/d24_host.h"

#include "tnv5/common/messages.h"
#include "tnv5/d24/display_text.h"

namespace tnv5::host {

QString displayText(const TPass& pass)
{
    if (common::IsPseudoCard(pass.card)) {
        return {};
    }
    const QString who = pass.name.isEmpty() ? QStringLiteral("Card ") + pass.card : pass.name;
    const QString what =
        pass.opened() ? QStringLiteral("Balance ") + amountText(pass.balance) : toText(pass.refusal);
    return d24::TDisplayText(who, what).text();
}

TD24Host::TD24Host(d24::TTurnStylerDeviceD24& device, TClubDesk& desk) : FDevice(&device), FDesk(desk)
{
    device.SetOnCheckSQL([this](platform::TComponent*, const QVariant&, const QVariant& address,
                                const QVariant& type, const QVariant& card, const QVariant&, QImage&,
                                const QVariant& mode, QVariant& mess, QVariant& result) {
        const bool passed = mode == d24::cmNoAnswer && passesUntold(address.toString(), type.toString());
        onCheck(address.toString(), card.toString(), passed ? d24::cmFinish : mode.toInt(), mess, result);
    });
    device.SetOnGetImg(
        [this](platform::TComponent*, const QString& address, QImage& image) { onImage(address, image); });
    device.SetOnError(
        [this](platform::TComponent*, const QString& text) { troubleFor(Keeping, FDesk, text); });
}

TD24Host::~TD24Host()
{
    close();
}

void TD24Host::close()
{
    if (FDevice) {
        FDevice->SetOnCheckSQL({});
        FDevice->SetOnGetImg({});
        FDevice->SetOnError({});
        FDevice.clear();
    }
}

void TD24Host::onCheck(const QString& address, const QString& card, int mode, QVariant& mess,
                       QVariant& result)
{
    if (mode == d24::cmOpen) {
        const TPass pass = decideFor(Keeping, FDesk, address, card);
        mess = displayText(pass);
        result = int(pass.opened());
    } else if (const auto ending = endingOf(mode)) {
        result = 1;
        endFor(Keeping, FDesk, address, card, *ending);
    }
}

bool TD24Host::passesUntold(const QString& address, const QString& type) const
{
    if (type != u"G") {
        return false;
    }
    const d24::PRFidInfo record = FDevice->StackItem(FDevice->p_hw_FindDevice(QString(), address));
    return !FDevice->CheckET() || (record && record->Finish);
}

void TD24Host::onImage(const QString& address, QImage& image)
{
    const int index = FDevice->p_hw_FindDevice(QString(), address);
    if (const d24::PRFidInfo record = FDevice->StackItem(index)) {
        image = FDesk.pictureFor(record->CardNumber);
    }
}

} // namespace tnv5::host
