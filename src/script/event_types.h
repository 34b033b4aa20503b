#pragma once

#include "tnv5/script/script_engine.h"

namespace tnv5::script {

/// A function of a script that handles an event. Arguments by reference have their new values afterwards;
/// what it raises leaves the component's event as an exception.
using TScriptHandler = std::function<void(QVariantList& Args)>;

/// How a published event of C++ takes a function of a script.
struct TEventType
{
    QMetaType Type;
    TScriptParams Params;
    /// The value for the event's property. An empty handler makes an empty event.
    std::function<QVariant(TScriptHandler)> Make;
};

/// The type of a published property, if it is an event of a component; else none.
const TEventType* FindEventType(QMetaType type);

} // namespace tnv5::script
