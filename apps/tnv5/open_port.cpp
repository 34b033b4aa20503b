#include "apps/tnv5/open_port.h"

#include "apps/tnv5/console.h"
#include "tnv5/host/port_diagnosis.h"

namespace tnv5::cli {

void explain(const QString& port, qint64 osError)
{
    for (const QString& line : host::explainPort(host::portFacts(port, osError))) {
        complain(line);
    }
}

void openPort(platform::TComPort& port)
{
    try {
        port.Open();
    } catch (const platform::EComPort& error) {
        explain(port.Port(), error.osError());
        throw;
    }
}

} // namespace tnv5::cli
