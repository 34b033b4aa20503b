#include "tnv5/d24/d24_tables.h"

#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"

namespace tnv5::d24 {

using common::Same;

int TPassTable::findDevice(QStringView device) const
{
    return indexOf([device](const TRFidInfo& pass) { return Same(pass.Device, device); });
}

int TPassTable::findIP(QStringView ip) const
{
    return indexOf([ip](const TRFidInfo& pass) { return Same(pass.IP, ip); });
}

int TPassTable::findCard(QStringView device, QStringView card) const
{
    return indexOf(
        [&](const TRFidInfo& pass) { return Same(pass.Device, device) && Same(pass.CardNumber, card); });
}

PRFidInfo TPassTable::add(const QString& ip, const QString& device, const QString& deviceType,
                          const QString& card)
{
    const PRFidInfo pass = append();
    if (!pass) {
        return pass;
    }
    pass->IP = ip;
    pass->Device = device;
    pass->DeviceType = deviceType;
    pass->CardNumber = card;
    pass->Status = common::kNew;
    pass->Starttime = platform::TimeOfDay();
    return pass;
}

} // namespace tnv5::d24
