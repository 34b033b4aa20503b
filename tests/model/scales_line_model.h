#pragma once

#include "model/scales_branches.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <functional>
#include <optional>

/// What a scale's component stands on, told once more and as plainly as possible: time with one timer, a port
/// in memory, a packet splitter. Nothing of the module's own code is used.
namespace tnv5::scales::model {

/// An exception that host code or a port raised; a silent one is not shown to anybody.
struct TFailure
{
    QString text;
    bool silent = false;
};

/// Thrown inside the model once its component is gone.
struct TGone
{
};

/// Everything that the host hears or may interfere with.
enum class TEvent { Log, Error, Weight, Opening, Closing, Writing, Written, Wait, Unhandled };

using THostCall = std::function<void(TEvent event, const QString& text)>;

/// An event's text with the number of the handler that hears it.
inline QString numbered(int handler, const QString& text)
{
    return u'#' + QString::number(handler) + u' ' + text;
}

/// Runs what enters from the event loop: what escapes from it is told to the host and ends here.
template <class Body>
void guardedCall(const THostCall& host, Body&& body)
{
    try {
        body();
    } catch (const TGone&) {
    } catch (const TFailure& failure) {
        if (!failure.silent) {
            host(TEvent::Unhandled, failure.text);
        }
    }
}

/// Time with at most one timer.
class TClockModel
{
public:
    struct TTimer
    {
        int interval = 1000;
        bool enabled = false;
        std::optional<qint64> due;
        std::function<void()> tick;
    };

    qint64 now = 0;
    TTimer* timer = nullptr;

    qint64 timeOfDay() const { return now % 86'400'000; }

    void arm(TTimer& ticking) const
    {
        ticking.due.reset();
        if (ticking.enabled && ticking.interval > 0) {
            ticking.due = now + ticking.interval;
        }
    }

    void enable(TTimer& ticking, bool enabled) const
    {
        if (ticking.enabled != enabled) {
            ticking.enabled = enabled;
            arm(ticking);
        }
    }

    void advance(qint64 ms)
    {
        const qint64 target = now + ms;
        while (timer != nullptr && timer->due && *timer->due <= target) {
            const qint64 when = *timer->due;
            now = qMax(now, when);
            timer->due = when + timer->interval;
            timer->tick();
        }
        now = qMax(now, target);
    }

    void jump(qint64 to)
    {
        if (timer != nullptr && timer->due) {
            *timer->due += to - now;
        }
        now = to;
    }
};

class TPortModel;

/// Cuts what a port reads into packets.
class TSplitterModel
{
public:
    /// Sets a position counted from 1: -1 left to the string, 0 not found.
    using TAsk = std::function<void(const QByteArray& buffer, qsizetype& position)>;

    explicit TSplitterModel(const THostCall& host) : FHost(host) {}

    QByteArray startString;
    QByteArray stopString;
    TAsk askStart;
    TAsk askStop;
    std::function<void(const QByteArray& packet)> deliver;

    TPortModel* port() const { return FPort; }
    void attach(TPortModel* port);
    /// The port is gone; what it had read stays until the splitter is attached anew.
    void forgetPort() { FPort = nullptr; }
    void append(const QByteArray& bytes);

private:
    struct TAnswer
    {
        qsizetype position = -1;
        bool obsolete = false; // the buffer was emptied while the handler ran
    };

    bool step();
    bool takePacket();
    TAnswer ask(const TAsk& handler);

    const THostCall& FHost;
    TPortModel* FPort = nullptr;
    QByteArray FBuffer;
    bool FInside = false;
    bool FStartedByString = false;
    bool FAsking = false;
    int FDelivering = 0;
    int FAttachments = 0;
};

/// A port in memory.
class TPortModel
{
public:
    explicit TPortModel(const THostCall& host) : FHost(host) {}
    ~TPortModel();
    Q_DISABLE_COPY_MOVE(TPortModel)

    QString name = QStringLiteral("MEMORY");
    int baudRate = 9600;
    int dataBits = 8;
    int parity = 0;
    int stopBits = 0;
    int readGap = 0;
    bool connected = false;
    std::optional<QString> openFailure;
    std::optional<QString> closeFailure;
    std::optional<QString> writeFailure;
    TSplitterModel* splitter = nullptr;

    void open();
    void close();
    void write(const QByteArray& bytes);
    void feed(const QByteArray& bytes);

private:
    const THostCall& FHost;
};

} // namespace tnv5::scales::model
