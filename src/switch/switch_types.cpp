#include "tnv5/switch/switch_types.h"

#include "tnv5/common/text.h"
#include "tnv5/switch/switch_texts.h"

namespace tnv5::switching {

int TJobTable::find(QStringView device, QStringView relay) const
{
    return indexOf([&](const TRFidInfo& job) {
        return common::Same(job.Device, device) && common::Same(job.Relay, relay);
    });
}

PRFidInfo TJobTable::add(const QString& ip, const QString& device, const QString& relay)
{
    const PRFidInfo job = append();
    if (job) {
        const platform::TDateTime now = platform::Now();
        *job = {ip, device, relay, kNone, kNone, now, now};
    }
    return job;
}

} // namespace tnv5::switching
