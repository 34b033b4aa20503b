#include "tnv5/connector/liveness_table.h"

#include "tnv5/common/text.h"

namespace tnv5::connector {

using common::Same;

int TLivenessTable::find(QStringView ip, QStringView device) const
{
    return lastIndexOf(
        [&](const TDevicelist& entry) { return Same(entry.Device, device) && Same(entry.IP, ip); });
}

RDeviceList TLivenessTable::add(const QString& ip, const QString& device, const QString& deviceType)
{
    RDeviceList entry = append();
    if (!entry) {
        entry = std::make_shared<TDevicelist>();
    }
    *entry = {ip, device, deviceType, platform::Now()};
    return entry;
}

} // namespace tnv5::connector
