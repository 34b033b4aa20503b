#pragma once

#include "tnv5/d24/d24_types.h"

/// The commands that answer a pass, in the connector's short form: code + IP + ":" + controller + display
/// text.
namespace tnv5::d24 {

struct TCommands
{
    QString main;  ///< opens ("GO") or refuses ("PH"); empty for controllers that have no gate
    QString extra; ///< display ("SH"); empty when nothing is to be shown
};

/// Commands that refuse or allow a pass. A controller of type "I" only has a display; "G" always gets its
/// display command, "T" only with a text; any other type gets an empty main command.
TCommands commandsFor(const TRFidInfo& pass, bool allow);

/// Command that sounds the alarm of a controller.
QString alarmCommand(const QString& ip, const QString& device);

} // namespace tnv5::d24
