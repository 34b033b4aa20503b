#pragma once

#include "tnv5/platform/automation/automation.h"

#include <ole2.h>

namespace tnv5::platform::automation {

/// Automation objects of Windows. `systemProvider()` creates them by ProgID in the apartment of the calling
/// thread; a host that already holds one, such as a control on its form, wraps it:
///
///     const TRegisteredClass control(u"TAxECRClass98", [=] { return fromDispatch(form.controlInterface());
///     });
///
/// Arguments by reference are passed as references to a value of their own type, an empty one as a reference
/// to a variant. Failures carry the description of EXCEPINFO where the library gives one. Events come through
/// the default source interface by a connection point.

/// The object of an interface, which is referenced as long as the object lives.
TObjectPtr fromDispatch(IDispatch* dispatch);

} // namespace tnv5::platform::automation
