#include "apps/tnv5-desk/find_socket.h"

#include "apps/tnv5-desk/words.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/platform/errors.h"

namespace tnv5::desk {

QString findSocket()
{
    return socketAmong(host::usualSockets());
}

QString socketAmong(const QStringList& there)
{
    if (there.size() < 2) {
        return there.value(0, host::usualSocket(QStringLiteral("club")));
    }
    const QStringList answering = host::answeringSockets(there);
    if (answering.size() > 1) {
        throw platform::Exception(TWords::severalHosts(answering));
    }
    return answering.value(0, there.first());
}

} // namespace tnv5::desk
