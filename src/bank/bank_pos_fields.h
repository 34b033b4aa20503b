#pragma once

#include <QString>

namespace tnv5::bank {

/// A field of a response, counted from 1; "-1" when it is empty or absent.
///
/// Walks the text character by character. A separator begins the next field, and where another one stands
/// right behind it that begins one too, in the same step. A third one in a row is passed without beginning a
/// field; intended. Examples, with ";": in "a;;b" field 2 is "-1" and field 3 is "b"; in "a;;;b" field 3 is
/// "b" and field 4 is "-1".
QString responseField(QStringView text, int number, QChar separator);

} // namespace tnv5::bank
