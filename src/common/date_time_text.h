#pragma once

#include "tnv5/platform/clock.h"

#include <QString>
#include <QStringView>
#include <functional>
#include <optional>

/// Date-times as texts. The format is the host's; without one of its own this is used:
///
///     printed   dd.mm.yyyy hh:mm:ss     30.12.1899 12:05:00 is noon and five minutes without a date
///     read      D.M.YYYY, D.M.YY (20YY) or YYYY-MM-DD, alone or with a blank and H:M[:S[.fff]] behind it,
///               or such a time alone; day, month, hour, minute and second have one or two digits
namespace tnv5::common {

/// How date-times are printed and read.
struct TDateTimeFormat
{
    std::function<QString(platform::TDateTime)> print;
    /// None for a text that is not convertible.
    std::function<std::optional<platform::TDateTime>(QStringView)> read;
};

/// Sets the host's format; a function that is missing stands for the default one.
/// @return the format before
TDateTimeFormat setDateTimeFormat(TDateTimeFormat format);

/// A date-time as text in the host's format.
QString DateTimeToText(platform::TDateTime value);
/// A text in the host's format as date-time; none when it is not convertible.
std::optional<platform::TDateTime> TextToDateTime(QStringView text);

/// A date-time in whole milliseconds, so that 12:05:00 does not become 12:04:59 for the noise of a double.
qint64 WholeMs(platform::TDateTime value);
/// Its time of day, in whole milliseconds since midnight.
qint64 TimeOfDayMs(platform::TDateTime value);

} // namespace tnv5::common
