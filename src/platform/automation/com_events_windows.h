#pragma once

#include "tnv5/platform/automation/automation.h"

#include <ole2.h>

#include <ocidl.h>

namespace tnv5::platform::automation {

/// Listens to the default source interface of an object until it is destroyed.
class TComEvents
{
public:
    /// @throws EOleError when the object has no events
    TComEvents(IDispatch* source, TEventHandler handler);
    ~TComEvents();
    TComEvents(const TComEvents&) = delete;
    TComEvents& operator=(const TComEvents&) = delete;

private:
    class TSink;

    IConnectionPoint* FPoint = nullptr;
    TSink* FSink = nullptr;
    DWORD FCookie = 0;
};

} // namespace tnv5::platform::automation
