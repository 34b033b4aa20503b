#include "apps/tnv5/open_port.h"

#include "tnv5/host/port_diagnosis.h"

#include <cerrno>

namespace tnv5::cli {

void explain(const QString& port, qint64 osError, void (*tell)(const QString& line))
{
    for (const QString& line : host::explainPort(host::portFacts(port, osError))) {
        tell(line);
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

void keepPort(host::TPortKeeper& keeper, const platform::TComPort& port, const std::function<void()>& opened,
              const std::function<void()>& hopeless)
{
    keeper.OnOpened = opened;
    keeper.OnLost = [&port](const QString& why) {
        complain(QStringLiteral("%1 went away (%2); it will be opened again when it is back.")
                     .arg(port.Port(), why));
    };
    keeper.OnCannotOpen = [&keeper, &port, hopeless](const QString& why) {
        complain(why);
        if (keeper.openings() == 0) {
            explain(port.Port(), keeper.osError());
        }
        if (keeper.osError() == EINVAL) {
            hopeless();
        }
    };
}

} // namespace tnv5::cli
