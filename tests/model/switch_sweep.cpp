#include "model/switch_model.h"

#include <QRegularExpression>
#include <QScopedValueRollback>
#include <cmath>

// The sweep over the jobs, the host's permission, and times.

namespace tnv5::switching::model {

namespace {

constexpr qint64 kMsPerMinute = 60'000;

QString two(qint64 number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

int number(const QRegularExpressionMatch& match, const char* name)
{
    return match.captured(QLatin1StringView(name)).toInt();
}

/// Days since 1899-12-30, told by counting them.
std::optional<qint64> daysOf(int year, int month, int day)
{
    const auto isLeap = [](int of) { return of % 4 == 0 && (of % 100 != 0 || of % 400 == 0); };
    const int lengths[] = {31, isLeap(year) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > lengths[month - 1]) {
        return std::nullopt;
    }
    qint64 days = day - 1;
    for (int before = 1; before < month; ++before) {
        days += lengths[before - 1];
    }
    for (int before = 1; before < year; ++before) {
        days += isLeap(before) ? 366 : 365;
    }
    return days - 693'593; // those from the first day of the year 1 to 1899-12-30
}

} // namespace

// ---- times

/// A value without a date, of less than a day.
QString TFormat::print(qint64 ms) const
{
    if (own) {
        return '@' + QString::number(ms);
    }
    return "30.12.1899 " + two(ms / 3'600'000) + ':' + two(ms / kMsPerMinute % 60) + ':' +
           two(ms / 1000 % 60);
}

std::optional<qint64> TFormat::read(const QString& text) const
{
    if (own) {
        return text.startsWith('@') ? std::optional(text.mid(1).toLongLong()) : std::nullopt;
    }
    static const QRegularExpression shape(
        "^ *(?<date>(?:(?<day>[0-9]{1,2})\\.(?<month>[0-9]{1,2})\\.(?<year>[0-9]{4}|[0-9]{2}))|"
        "(?:(?<year2>[0-9]{4})-(?<month2>[0-9]{1,2})-(?<day2>[0-9]{1,2})))?"
        "(?<gap> +)?(?<time>(?<hour>[0-9]{1,2}):(?<minute>[0-9]{1,2})"
        "(?::(?<second>[0-9]{1,2})(?<part>\\.[0-9]{3})?)?)? *\\z");
    const auto match = shape.match(trimmed(text)); // also without control characters at its ends
    const bool hasDate = match.hasCaptured("date");
    const bool hasTime = match.hasCaptured("time");
    if (!match.hasMatch() || (!hasDate && !hasTime)) {
        hit<"time: not convertible">();
        return std::nullopt;
    }
    if (hasDate && hasTime && !match.hasCaptured("gap")) {
        hit<"time: no blank">();
        return std::nullopt;
    }
    std::optional<qint64> days = 0;
    if (hasDate) {
        const bool isoDate = match.hasCaptured("year2");
        const bool shortYear = match.captured("year").size() == 2;
        days = either<"time: year first", "time: day first">(isoDate)
                   ? daysOf(number(match, "year2"), number(match, "month2"), number(match, "day2"))
                   : daysOf(number(match, "year") + (shortYear ? 2000 : 0), number(match, "month"),
                            number(match, "day"));
    } else {
        hit<"time: no date">();
    }
    if (!hasTime) {
        hit<"time: date alone">();
    }
    const int hour = number(match, "hour");
    const int minute = number(match, "minute");
    const int second = number(match, "second");
    if (!days || hour > 23 || minute > 59 || second > 59) {
        hit<"time: out of range">();
        return std::nullopt;
    }
    const QString fraction = match.captured("part");
    const qint64 ms = fraction.isEmpty() ? 0 : std::llround(("0" + fraction).toDouble() * 1000);
    return *days * kMsPerDay + hour * 3'600'000LL + minute * kMsPerMinute + second * 1000LL + ms;
}

int TModelSwitch::compared(double first, double second)
{
    const qint64 a = std::llround(first * kMsPerDay) % kMsPerDay;
    const qint64 b = std::llround(second * kMsPerDay) % kMsPerDay;
    fire(FOnLog, this,
         "$$ " + FFormat.print(a) + ' ' + FFormat.print(b) + ' ' +
             QString::number(std::llabs(a - b) / kMsPerMinute));
    const int order = a < b ? -1 : a > b ? 1 : 0;
    way<"compared: before", "compared: same", "compared: behind">(order + 1);
    return order;
}

// ---- the sweep

void TModelSwitch::sweep()
{
    if (either<"sweep inside a sweep", "sweep">(FBusy)) {
        return;
    }
    const QScopedValueRollback busy(FBusy, true);
    if (FJobs.empty()) {
        hit<"sweep: no jobs">();
    }
    const int count = StackItemsCount();
    for (int index = count - 1; index >= 0; --index) {
        visit(StackItem(index));
    }
    if (StackItemsCount() > count) {
        hit<"sweep: a job came meanwhile">();
    }
}

void TModelSwitch::visit(const PJob& job)
{
    show(this, "XXXSTACK", job->Device, job->Relay, job->Status, job->StatusDevice);
    if (job->StatusDevice == "NOTINLINE") {
        notInLine(job);
    }
    if (job->StatusDevice == "NONE") {
        neverReported(job);
    }
    if (job->Status == "NONE") {
        newJob(job);
    }
    const bool wasChanged = job->Status == "ON" && job->StatusDevice == "OFF";
    if (job->Status == "ON" && job->StatusDevice == "OFF") {
        wantedOn(job);
    }
    if (job->Status == "OFF" && job->StatusDevice == "ON") {
        wantedOff(job);
    }
    if (job->Status == "ON" && job->StatusDevice == "ON") {
        either<"running: switched on just now", "running: since before">(wasChanged);
        running(job);
    }
}

void TModelSwitch::notInLine(const PJob& job)
{
    report(job);
    if (either<"not in line: given up", "not in line: kept">(ask(job, 3) == 1)) {
        const auto text = [&] { return "Device " + job->Device + " does not working"; };
        job->Status = "OFF";
        show(this, "STACK", job->Device, job->Relay, job->Status, "XXX");
        monitor("STATUS!STACK!" + job->Device + '!' + job->Relay + '!' + job->Status + "!XXX&");
        error(text());
        monitor("ERROR!" + text() + '&');
    }
    job->StatusDevice = "OFF";
}

void TModelSwitch::neverReported(const PJob& job)
{
    line('$' + job->IP + ':' + job->Device + "900");
    if (either<"never reported: late", "never reported: awaited">(daysApart(job->Starttime, today(), 2))) {
        job->StatusDevice = "NOTINLINE";
    }
    report(job);
}

void TModelSwitch::newJob(const PJob& job)
{
    QVariant wanted = "OFF";
    either<"new job: host asked", "new job: no handler">(bool(FOnNewItem));
    fire(FOnNewItem, this, job->Device, job->Relay, job->Status, job->StatusDevice, wanted);
    job->Status = wanted.toString();
    if (job->Status != "ON" && job->Status != "OFF") {
        hit<"new job: odd wish">();
    }
}

void TModelSwitch::wantedOn(const PJob& job)
{
    report(job);
    if (either<"on: allowed", "on: refused">(ask(job, 0) == 1)) {
        changeOver(job->IP, job->Device, job->Relay);
        job->StatusDevice = "ON";
    } else {
        job->Status = "OFF";
    }
}

void TModelSwitch::wantedOff(const PJob& job)
{
    report(job);
    if (either<"off: allowed", "off: refused">(ask(job, 1) == 1)) {
        changeOver(job->IP, job->Device, job->Relay);
        job->StatusDevice = "OFF";
    } else {
        job->Status = "ON";
    }
}

void TModelSwitch::running(const PJob& job)
{
    report(job);
    if (!either<"running: time left", "running: over">(compared(now(), job->Finishtime) < 0)) {
        return;
    }
    if (either<"running: switched off", "running: a minute more">(ask(job, 2) == 1)) {
        job->Status = "OFF";
        report(job);
        job->StatusDevice = "OFF";
        report(job);
        changeOver(job->IP, job->Device, job->Relay);
    } else {
        job->Finishtime = now() + 1.0 / 1440;
    }
}

int TModelSwitch::ask(const PJob& job, int yesnot)
{
    if (!job || yesnot < 0 || yesnot > 3) {
        hit<"question: none such">();
        return -1;
    }
    if (!FOnQuestion) {
        way<"0: no handler", "1: no handler", "2: no handler", "3: no handler">(yesnot);
        return 1;
    }
    QVariant result = 1;
    fire(FOnQuestion, this, job->Device, job->Relay, job->Status, job->StatusDevice, yesnot, result);
    return integerOf(result);
}

} // namespace tnv5::switching::model
