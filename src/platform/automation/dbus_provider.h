#pragma once

#include <string>

namespace tnv5::platform::automation {

/// Automation objects on D-Bus, the late binding of the desktop. A ProgID is a bus name; path and interface
/// are formed from it: "CardPay.PosApi" stands at the path "/CardPay/PosApi" with the interface
/// "CardPay.PosApi". Bus names have a dot; a ProgID without one stands behind "tnv5.".
///
/// A reply's first value is the result; the further values fill the arguments by reference, in their order.
/// Properties and constants go through org.freedesktop.DBus.Properties, signals are events. A call keeps the
/// message loop running and fails when the process behind the object ends; an object stays with that process,
/// and another one that takes its name later is not spoken to.

/// The bus whose objects are created from now on; without an address, as at first, the session's.
void setAutomationBus(const std::string& address);

} // namespace tnv5::platform::automation
