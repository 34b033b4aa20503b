#include "tnv5/common/date_time_text.h"

#include "tnv5/common/text.h"

#include <QDate>
#include <cmath>
#include <utility>

namespace tnv5::common {

using platform::kMsPerDay;
using platform::TDateTime;

namespace {

// The largest date-time whose milliseconds fit 64 bits with room to spare; nothing real comes near it.
constexpr double kLargest = 1e11;

qint64 firstDay()
{
    static const qint64 day = QDate(1899, 12, 30).toJulianDay();
    return day;
}

/// Takes a text apart from its front; what does not fit leaves it as it is.
class TReader
{
public:
    explicit TReader(QStringView text) : FRest(text) {}

    bool atEnd() const { return FRest.isEmpty(); }

    /// A number of `least` to `most` digits, with no digit behind it.
    std::optional<int> number(qsizetype least, qsizetype most)
    {
        qsizetype digits = 0;
        int value = 0;
        while (digits < FRest.size() && digits <= most && FRest[digits] >= u'0' && FRest[digits] <= u'9') {
            value = value * 10 + (FRest[digits].unicode() - u'0');
            ++digits;
        }
        if (digits < least || digits > most) {
            return std::nullopt;
        }
        FLength = digits;
        FRest = FRest.sliced(digits);
        return value;
    }

    /// Digits of the last number.
    qsizetype length() const { return FLength; }

    bool skip(QChar character)
    {
        if (!FRest.startsWith(character)) {
            return false;
        }
        FRest = FRest.sliced(1);
        return true;
    }

private:
    QStringView FRest;
    qsizetype FLength = 0;
};

std::optional<qint64> dayOf(int year, int month, int day)
{
    const QDate date(year, month, day);
    if (year < 1 || !date.isValid()) {
        return std::nullopt;
    }
    return date.toJulianDay() - firstDay();
}

// D.M.YYYY or D.M.YY
std::optional<qint64> readDayFirst(TReader& reader)
{
    const auto day = reader.number(1, 2);
    const auto month = day && reader.skip(u'.') ? reader.number(1, 2) : std::nullopt;
    const auto year = month && reader.skip(u'.') ? reader.number(2, 4) : std::nullopt;
    if (!year || reader.length() == 3) {
        return std::nullopt;
    }
    return dayOf(reader.length() == 2 ? 2000 + *year : *year, *month, *day);
}

// YYYY-MM-DD
std::optional<qint64> readYearFirst(TReader& reader)
{
    const auto year = reader.number(4, 4);
    const auto month = year && reader.skip(u'-') ? reader.number(1, 2) : std::nullopt;
    const auto day = month && reader.skip(u'-') ? reader.number(1, 2) : std::nullopt;
    return day ? dayOf(*year, *month, *day) : std::nullopt;
}

std::optional<qint64> readDate(TReader& reader)
{
    TReader other = reader;
    if (const auto day = readYearFirst(other)) {
        reader = other;
        return day;
    }
    return readDayFirst(reader);
}

// H:M[:S[.fff]] in milliseconds
std::optional<qint64> readTime(TReader& reader)
{
    const auto hour = reader.number(1, 2);
    const auto minute = hour && reader.skip(u':') ? reader.number(1, 2) : std::nullopt;
    if (!minute) {
        return std::nullopt;
    }
    std::optional<int> second = 0;
    std::optional<int> ms = 0;
    if (reader.skip(u':')) {
        second = reader.number(1, 2);
        if (second && reader.skip(u'.')) {
            ms = reader.number(3, 3);
        }
    }
    if (!second || !ms || *hour > 23 || *minute > 59 || *second > 59) {
        return std::nullopt;
    }
    return ((*hour * 60LL + *minute) * 60 + *second) * 1000 + *ms;
}

std::optional<TDateTime> readDefault(QStringView text)
{
    const QStringView trimmed = Trim(text);
    TReader alone(trimmed);
    if (const auto time = readTime(alone); time && alone.atEnd()) {
        return static_cast<double>(*time) / static_cast<double>(kMsPerDay);
    }
    TReader reader(trimmed);
    const auto day = readDate(reader);
    if (!day) {
        return std::nullopt;
    }
    std::optional<qint64> time = 0;
    if (!reader.atEnd()) {
        bool apart = false;
        while (reader.skip(u' ')) {
            apart = true;
        }
        time = apart ? readTime(reader) : std::nullopt;
    }
    if (!time || !reader.atEnd()) {
        return std::nullopt;
    }
    return static_cast<double>(*day * kMsPerDay + *time) / static_cast<double>(kMsPerDay);
}

QString printDefault(TDateTime value)
{
    const qint64 timeOfDay = TimeOfDayMs(value);
    const QDate date = QDate::fromJulianDay(firstDay() + (WholeMs(value) - timeOfDay) / kMsPerDay);
    const auto two = [](qint64 number) { return QString::number(number).rightJustified(2, u'0'); };
    const qint64 seconds = timeOfDay / 1000;
    return two(date.day()) + u'.' + two(date.month()) + u'.' +
           QString::number(date.year()).rightJustified(4, u'0') + u' ' + two(seconds / 3600) + u':' +
           two(seconds / 60 % 60) + u':' + two(seconds % 60);
}

TDateTimeFormat& hostFormat()
{
    static TDateTimeFormat format;
    return format;
}

} // namespace

TDateTimeFormat setDateTimeFormat(TDateTimeFormat format)
{
    return std::exchange(hostFormat(), std::move(format));
}

QString DateTimeToText(TDateTime value)
{
    const auto print = hostFormat().print;
    return print ? print(value) : printDefault(value);
}

std::optional<TDateTime> TextToDateTime(QStringView text)
{
    const auto read = hostFormat().read;
    return read ? read(text) : readDefault(text);
}

qint64 WholeMs(TDateTime value)
{
    if (!(std::abs(value) < kLargest)) {
        return 0;
    }
    return std::llround(value * static_cast<double>(kMsPerDay));
}

qint64 TimeOfDayMs(TDateTime value)
{
    const qint64 ms = WholeMs(value) % kMsPerDay;
    return ms < 0 ? ms + kMsPerDay : ms;
}

} // namespace tnv5::common
