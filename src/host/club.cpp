#include "tnv5/host/club.h"

#include "tnv5/common/messages.h"

#include <QRegularExpression>
#include <QTime>
#include <array>
#include <cmath>
#include <utility>

namespace tnv5::host {

namespace {

template <class Enum>
using TWord = std::pair<Enum, QStringView>;

constexpr std::array kDirections = {
    TWord<TDirection>{TDirection::In, u"in"},
    TWord<TDirection>{TDirection::Out, u"out"},
    TWord<TDirection>{TDirection::Inner, u"inner"},
};

constexpr std::array kRefusals = {
    TWord<TRefusal>{TRefusal::None, u""},
    TWord<TRefusal>{TRefusal::UnknownGate, u"unknown gate"},
    TWord<TRefusal>{TRefusal::UnknownCard, u"unknown card"},
    TWord<TRefusal>{TRefusal::Suspended, u"suspended"},
    TWord<TRefusal>{TRefusal::NoMembership, u"no membership"},
    TWord<TRefusal>{TRefusal::NotYetValid, u"not yet valid"},
    TWord<TRefusal>{TRefusal::Expired, u"expired"},
    TWord<TRefusal>{TRefusal::WrongZone, u"wrong zone"},
    TWord<TRefusal>{TRefusal::AlreadyInside, u"already inside"},
    TWord<TRefusal>{TRefusal::HostFault, u"host fault"},
};

constexpr std::array kEndings = {
    TWord<TEnding>{TEnding::None, u""},
    TWord<TEnding>{TEnding::Passed, u"passed"},
    TWord<TEnding>{TEnding::TimedOut, u"timed out"},
    TWord<TEnding>{TEnding::Unanswered, u"unanswered"},
    TWord<TEnding>{TEnding::Interrupted, u"interrupted"},
    TWord<TEnding>{TEnding::Abandoned, u"abandoned"},
};

template <class Words, class Enum>
QString wordOf(const Words& words, Enum value)
{
    for (const auto& [known, word] : words) {
        if (known == value) {
            return word.toString();
        }
    }
    return {};
}

template <class Enum, class Words>
std::optional<Enum> valueOf(const Words& words, QStringView text)
{
    for (const auto& [value, word] : words) {
        if (word == text) {
            return value;
        }
    }
    return std::nullopt;
}

const QDate kFirstDay(1899, 12, 30);
const QString kDayFormat = QStringLiteral("yyyy-MM-dd");
const QString kTimeFormat = QStringLiteral("HH:mm:ss.zzz");
const QString kWholeSeconds = QStringLiteral("HH:mm:ss"); // as other programs write them

qint64 toMs(platform::TDateTime time)
{
    return std::llround(time * static_cast<double>(platform::kMsPerDay));
}

QTime timeOf(platform::TDateTime time)
{
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(toMs(time) % platform::kMsPerDay));
}

QString whoOf(const TPass& pass)
{
    if (pass.card == common::kCardButton) {
        return QStringLiteral("exit button");
    }
    if (pass.card == common::kCardManual) {
        return QStringLiteral("opened by hand") +
               (pass.who.isEmpty() ? QString() : QStringLiteral(" by ") + pass.who) +
               (pass.note.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(pass.note));
    }
    return QStringLiteral("%1 (%2)").arg(pass.name.isEmpty() ? QStringLiteral("card") : pass.name, pass.card);
}

QString whatOf(const TPass& pass)
{
    if (!pass.opened()) {
        return QStringLiteral("refused: ") + toText(pass.refusal);
    }
    return pass.underWay() ? QStringLiteral("opened") : toText(pass.ending);
}

} // namespace

QString toText(TDirection direction)
{
    return wordOf(kDirections, direction);
}

QString toText(TRefusal refusal)
{
    return wordOf(kRefusals, refusal);
}

QString toText(TEnding ending)
{
    return wordOf(kEndings, ending);
}

std::optional<TDirection> toDirection(QStringView text)
{
    return valueOf<TDirection>(kDirections, text);
}

std::optional<TRefusal> toRefusal(QStringView text)
{
    return valueOf<TRefusal>(kRefusals, text);
}

std::optional<TEnding> toEnding(QStringView text)
{
    return valueOf<TEnding>(kEndings, text);
}

bool isLineAddress(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9]{2}[A-Z]\\z"));
    return form.match(text).hasMatch();
}

bool isBusAddress(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9A-Z]{3}[0-9A-HJ-Z]\\z"));
    return form.match(text).hasMatch();
}

std::optional<TGate> toGate(const QString& text)
{
    const QStringList parts = text.split(u':');
    if (parts.size() != 3 || !isLineAddress(parts[0]) || parts[1].isEmpty() || parts[1].contains(u';')) {
        return std::nullopt;
    }
    const std::optional<TDirection> direction = toDirection(parts[2]);
    return direction ? std::optional(TGate{parts[0], parts[1], *direction}) : std::nullopt;
}

QDate dayOf(platform::TDateTime time)
{
    return kFirstDay.addDays(toMs(time) / platform::kMsPerDay);
}

QString toText(platform::TDateTime time)
{
    return time == 0 ? QString()
                     : dayOf(time).toString(kDayFormat) + u' ' + timeOf(time).toString(kTimeFormat);
}

platform::TDateTime toDateTime(const QString& text)
{
    const QDate day = QDate::fromString(text.left(10), kDayFormat);
    const QString hours = text.mid(11);
    const QTime time =
        QTime::fromString(hours, hours.size() > kWholeSeconds.size() ? kTimeFormat : kWholeSeconds);
    if (!day.isValid() || !time.isValid()) {
        return 0;
    }
    const qint64 ms = kFirstDay.daysTo(day) * platform::kMsPerDay + time.msecsSinceStartOfDay();
    return static_cast<double>(ms) / static_cast<double>(platform::kMsPerDay);
}

qint64 priceFor(int grams, qint64 centsPerKg)
{
    constexpr qint64 kGramsPerKg = 1'000;
    return (grams * centsPerKg + kGramsPerKg / 2) / kGramsPerKg;
}

QString amountText(qint64 cents)
{
    constexpr quint64 kCents = 100;
    const quint64 amount = cents < 0 ? 0 - static_cast<quint64>(cents) : static_cast<quint64>(cents);
    return QStringLiteral("%1%2.%3")
        .arg(cents < 0 ? QStringLiteral("-") : QString())
        .arg(amount / kCents)
        .arg(amount % kCents, 2, 10, QChar(u'0'));
}

QString passText(const TPass& pass)
{
    return QStringLiteral("%1  %2").arg(whoOf(pass), whatOf(pass));
}

QString logLine(const TPass& pass)
{
    const platform::TDateTime when = pass.ended != 0 ? pass.ended : pass.began;
    return QStringLiteral("%1  %2  %3").arg(timeOf(when).toString(kTimeFormat), pass.gate, passText(pass));
}

QString logLine(const TSale& sale)
{
    return QStringLiteral("%1  scale  %2 (%3)  %4 g %5 at %6/kg: %7")
        .arg(timeOf(sale.sold).toString(kTimeFormat), sale.name, sale.card, QString::number(sale.grams),
             sale.product, amountText(sale.centsPerKg), amountText(sale.cents));
}

} // namespace tnv5::host
