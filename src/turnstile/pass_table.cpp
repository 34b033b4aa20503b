#include "tnv5/turnstile/pass_table.h"

#include "tnv5/common/messages.h"
#include "tnv5/common/text.h"

namespace tnv5::turnstile {

int TPassTable::find(QStringView device) const
{
    return indexOf([device](const TRFidInfo& pass) { return common::Same(pass.Device, device); });
}

int TPassTable::find(QStringView device, QStringView card) const
{
    return indexOf([device, card](const TRFidInfo& pass) {
        return common::Same(pass.Device, device) && common::Same(pass.CardNumber, card);
    });
}

PRFidInfo TPassTable::add(const QString& device, const QString& card)
{
    const PRFidInfo pass = append();
    if (!pass) {
        return pass;
    }
    pass->CardNumber = card;
    pass->Device = device;
    pass->Status = common::kNew;
    pass->Starttime = platform::TimeOfDay();
    return pass;
}

} // namespace tnv5::turnstile
