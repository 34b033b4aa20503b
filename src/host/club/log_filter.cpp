#include "tnv5/host/club/log_filter.h"

#include <QLocale>

namespace tnv5::host {

QString toText(TLevel level)
{
    switch (level) {
    case TLevel::Info:
        return QStringLiteral("info");
    case TLevel::Warning:
        return QStringLiteral("warning");
    case TLevel::Error:
        break;
    }
    return QStringLiteral("error");
}

QString countText(qint64 count)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(count);
}

QList<TLogLine> TLogFilter::take(const TLogLine& line)
{
    QString key = line.source + u'\n' + QString::number(int(line.level));
    if (!FWindows.contains(key) && FWindows.size() >= kMaxSources) {
        key = QString::number(int(line.level));
    }
    QList<TLogLine> out;
    TWindow& window = FWindows[key];
    const qint64 age = line.timeMs - window.beganMs;
    if (window.beganMs == 0 || age < 0 || age >= kWindowMs) { // also when the clock was set back
        out = countsOf(window, line.timeMs);
        window = {};
        window.beganMs = line.timeMs;
    }
    window.last = line;
    const bool trouble = line.level != TLevel::Info;
    if (const auto known = window.repeated.find(line.text); trouble && known != window.repeated.end()) {
        ++known.value();
    } else if (window.written >= (trouble ? kMaxTroubles : kMaxNews)) {
        ++window.others;
    } else {
        ++window.written;
        if (trouble) {
            window.repeated.insert(line.text, 0);
            window.order.append(line.text);
        }
        out.append(line);
    }
    return out;
}

QList<TLogLine> TLogFilter::due(qint64 nowMs)
{
    QList<TLogLine> out;
    for (auto window = FWindows.begin(); window != FWindows.end();) {
        const qint64 age = nowMs - window->beganMs;
        if (age >= 0 && age < kWindowMs) {
            ++window;
            continue;
        }
        out += countsOf(*window, nowMs);
        window = FWindows.erase(window);
    }
    return out;
}

QList<TLogLine> TLogFilter::rest(qint64 nowMs)
{
    QList<TLogLine> out;
    for (const TWindow& window : std::as_const(FWindows)) {
        out += countsOf(window, nowMs);
    }
    FWindows.clear();
    return out;
}

QList<TLogLine> TLogFilter::countsOf(const TWindow& window, qint64 nowMs)
{
    const qint64 seconds = std::max<qint64>(1, std::min(nowMs - window.beganMs, kWindowMs) / 1'000);
    QList<TLogLine> out;
    const auto tell = [&](const QString& text, qint64 count) {
        TLogLine line = window.last;
        line.timeMs = nowMs;
        line.text = QStringLiteral("%1 … %2 times more in %3 s").arg(text, countText(count)).arg(seconds);
        out.append(line);
    };
    for (const QString& text : window.order) {
        if (const qint64 count = window.repeated.value(text); count > 0) {
            tell(text, count);
        }
    }
    if (window.others > 0) {
        tell(QStringLiteral("others, such as: ") + window.last.text, window.others);
    }
    return out;
}

} // namespace tnv5::host
