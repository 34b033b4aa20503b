#pragma once

#include "tnv5/host/club.h"

#include <QImage>

namespace tnv5::host {

/// A picture to show beside a gate until the club has a photograph: head and shoulders in a colour that a
/// member always keeps, and the initials and the name when the process can draw text (a QGuiApplication, on
/// any platform, "offscreen" included). 160 by 200 pixels; well under a millisecond once the fonts are
/// loaded.
QImage holderPicture(const TMember& member);

/// First letters of the first and the last word of a name. Example: "Anna Maria Berg" gives "AB".
QString initialsOf(const QString& name);

} // namespace tnv5::host
