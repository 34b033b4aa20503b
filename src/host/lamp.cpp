#include "tnv5/host/lamp.h"

#include "tnv5/common/date_time_text.h"
#include "tnv5/host/club.h"

#include <algorithm>
#include <array>

namespace tnv5::host {

namespace {

constexpr std::array<std::pair<TLampEnding, QStringView>, 5> kLampEndings = {{
    {TLampEnding::None, u""},
    {TLampEnding::Over, u"over"},
    {TLampEnding::Stopped, u"stopped"},
    {TLampEnding::Refused, u"refused"},
    {TLampEnding::Unanswered, u"unanswered"},
}};

constexpr qsizetype kDateLength = 11;   // with the blank
constexpr qsizetype kMinutesLength = 8; // hh:mm:ss

QString timeOfDayText(platform::TDateTime time)
{
    return toText(time).mid(kDateLength);
}

QString whatOf(const TLampTime& time)
{
    if (!time.open()) {
        return toText(time.ending);
    }
    return time.waiting() ? QStringLiteral("ordered")
                          : QStringLiteral("until ") + timeOfDayText(time.until).left(kMinutesLength);
}

} // namespace

bool TLampTime::running(platform::TDateTime now) const
{
    return open() && began != 0 && common::WholeMs(now) < common::WholeMs(until);
}

QString toText(TLampEnding ending)
{
    for (const auto& [value, word] : kLampEndings) {
        if (value == ending) {
            return word.toString();
        }
    }
    return {};
}

std::optional<TLampEnding> toLampEnding(QStringView text)
{
    for (const auto& [value, word] : kLampEndings) {
        if (word == text) {
            return value;
        }
    }
    return std::nullopt;
}

qint64 secondsBetween(platform::TDateTime from, platform::TDateTime to)
{
    constexpr qint64 kMs = 1'000;
    return std::max<qint64>(0, (common::WholeMs(to) - common::WholeMs(from) + kMs - 1) / kMs);
}

QString timeLeftText(qint64 seconds)
{
    const auto two = [](qint64 number) { return QString::number(number).rightJustified(2, u'0'); };
    const qint64 minutes = seconds / 60;
    const QString start =
        minutes < 60 ? QString::number(minutes) : QString::number(minutes / 60) + u':' + two(minutes % 60);
    return start + u':' + two(seconds % 60);
}

QString logLine(const TLampTime& time)
{
    const platform::TDateTime when = time.ended != 0   ? time.ended
                                     : time.began != 0 ? time.began
                                                       : time.ordered;
    return QStringLiteral("%1  %2  %3 (%4)  %5 min for %6, %7")
        .arg(timeOfDayText(when), time.lamp, time.name, time.card, QString::number(time.minutes),
             amountText(time.cents), whatOf(time));
}

} // namespace tnv5::host
