#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace tnv5::platform {

/// Chooses the single-byte code page of ports and sockets; "windows-1251" unless the host sets another.
/// @throws EConvertError when the system does not know `name` or it is not a single-byte code page; the code
/// page in use stays.
void setCodePage(const QByteArray& name);

/// Name of the code page in use.
QByteArray codePage();

/// Text of bytes that came from a port or socket, with `before` in front. Every byte gives one character.
QString fromWire(QByteArrayView bytes, QStringView before = {});

/// Bytes of a text that goes to a port or socket, with `after` behind; a character that the code page lacks
/// becomes "?".
QByteArray toWire(QStringView text, QByteArrayView after = {});

/// The byte that one character becomes on the wire.
uchar wireByte(QChar character);

} // namespace tnv5::platform
