#pragma once

#include "tnv5/platform/component.h"

#include <QPointer>

namespace tnv5::common {

/// Sets a component's busy flag for as long as it lives and clears it whichever way the work ends, unless the
/// component was destroyed meanwhile.
class TBusyScope
{
public:
    TBusyScope(platform::TComponent& owner, bool& flag) : FOwner(&owner), FFlag(flag) { FFlag = true; }
    ~TBusyScope()
    {
        if (FOwner) {
            FFlag = false;
        }
    }
    TBusyScope(const TBusyScope&) = delete;
    TBusyScope& operator=(const TBusyScope&) = delete;

private:
    QPointer<platform::TComponent> FOwner;
    bool& FFlag;
};

} // namespace tnv5::common
