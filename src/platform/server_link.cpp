#include "tnv5/platform/server_link.h"

#include <utility>

namespace tnv5::platform {

bool TServerLink::keep(const QByteArray& bytes, bool& first)
{
    const QMutexLocker locked(&FLock);
    first = FUnread.isEmpty();
    if (FUnread.size() + bytes.size() > kMaxSocketQueue) {
        return false;
    }
    FUnread += bytes;
    return true;
}

QByteArray TServerLink::take()
{
    const QMutexLocker locked(&FLock);
    return std::exchange(FUnread, {});
}

} // namespace tnv5::platform
