#pragma once

#include "support/source_line.h"
#include "tnv5/platform/errors.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tnv5::tests {

using platform::TComponent;
using scales::TScalesDevice;
using testkit::TManualClock;
using testkit::TMemoryPort;

/// Bytes with zeroes in them.
inline QByteArray operator""_b(const char* bytes, size_t size)
{
    return {bytes, qsizetype(size)};
}

/// A text that a transcript can show: control characters and the upper half of the byte become \xNN.
inline QString shown(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        const ushort code = character.unicode();
        result += code < 0x20 || (code >= 0x7F && code <= 0xFF)
                      ? QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'))
                      : QString(character);
    }
    return result;
}

inline QString shown(const QByteArray& bytes)
{
    return shown(QString::fromLatin1(bytes));
}

// The lines of a transcript.

inline QString logged(const QString& text)
{
    return QStringLiteral("log ") + shown(text);
}

inline QString failed(const QString& text)
{
    return QStringLiteral("error ") + shown(text);
}

inline QString weighed(int weight)
{
    return QStringLiteral("weight %1").arg(weight);
}

inline QString wrote(const QByteArray& bytes)
{
    return QStringLiteral("write ") + shown(bytes);
}

inline QString raised(const QString& message)
{
    return QStringLiteral("raised ") + shown(message);
}

const QString kStart = QStringLiteral("log [01] Start read from port ");
const QString kStop = QStringLiteral("log [02] Stop read from port ");

inline QString got(const QByteArray& packet)
{
    return QStringLiteral("log [03] Get from port ") + shown(packet);
}

/// A request: its bytes, then its line in the log.
inline QStringList sent(const QByteArray& bytes)
{
    return {wrote(bytes), QStringLiteral("log [05] Send to port ") + shown(bytes)};
}

/// A packet that came in one read.
inline QStringList received(const QByteArray& packet)
{
    return {kStart, kStop, got(packet)};
}

const QString kNoPort = QStringLiteral("error [1] Com port not found!");
const QString kOverload = QStringLiteral("error [2] Scales are overvalue!");
const QString kNegative = QStringLiteral("error [3] Weight <0!");
const QString kNoAnswer = QStringLiteral("error [4] Scales does not answer!");
const QString kResetPort = QStringLiteral("log [07] Reset port COM7");

/// Keeps one ordered trace of what the component tells its host and its port.
class TScalesRecorder
{
public:
    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;

    /// Assigns all events. The recorder must outlive the component.
    void attach(TScalesDevice& scales)
    {
        scales.SetOnLog(
            [this, &scales](TComponent* Sender, const QString& Str) { add(Sender == &scales, logged(Str)); });
        scales.SetOnError(
            [this, &scales](TComponent* Sender, const QString& Str) { add(Sender == &scales, failed(Str)); });
        scales.SetOnWeight([this, &scales](TComponent* Sender, int Weight) {
            EXPECT_EQ(scales.LastWeight(), Weight) << "stored before it is told";
            add(Sender == &scales, weighed(Weight));
        });
    }

    /// Records what is written, byte for byte.
    void attach(TMemoryPort& port)
    {
        port.OnWritten = [this](const QByteArray& bytes) { note(wrote(bytes)); };
    }

    void add(bool rightSender, const QString& line)
    {
        EXPECT_TRUE(rightSender) << "wrong sender: " << line.toStdString();
        note(line);
        if (OnLine) {
            const auto hook = OnLine; // it may replace itself
            hook(line);
        }
    }

    /// Something that no handler of the component's reports.
    void note(const QString& line) { FLines << line; }

    /// Runs `action` once, inside the event whose line begins like this.
    void once(const QString& beginning, std::function<void()> action)
    {
        OnLine = [this, beginning, action = std::move(action)](const QString& line) {
            if (line.startsWith(beginning)) {
                OnLine = {};
                action();
            }
        };
    }

    /// Lines since the last call.
    QStringList take() { return std::exchange(FLines, {}); }
    qsizetype count() const { return FLines.size(); }
    qsizetype countOf(const QString& beginning) const
    {
        return std::count_if(FLines.begin(), FLines.end(),
                             [&](const QString& line) { return line.startsWith(beginning); });
    }

    /// Everything since the last call must be these lines.
    void expect(const QStringList& lines, TSourceLine where = TSourceLine::current())
    {
        const ::testing::ScopedTrace trace(where.file_name(), int(where.line()), "transcript");
        EXPECT_EQ(lines.join(u'\n').toStdString(), take().join(u'\n').toStdString());
    }

private:
    QStringList FLines;
};

/// One component on one open port in memory, named "COM7", with English messages and the time in the test's
/// hand. Every event is recorded, and so is what reaches the host's exception handler.
struct TScalesBench
{
    explicit TScalesBench(qint64 startMs = TManualClock::at(12, 0)) : clock(startMs)
    {
        FPreviousHandler = platform::setExceptionHandler(
            [this](const QString& message, const std::exception_ptr& error) { noteRaised(message, error); });
        clock.OnWait = [this] { wait(); };
        scales->SetIDLang(2);
        port->SetPort(QStringLiteral("COM7"));
        scales->SetComport(port.get());
        port->Open();
        trace.attach(*scales);
        trace.attach(*port);
    }
    ~TScalesBench() { platform::setExceptionHandler(FPreviousHandler); }
    TScalesBench(const TScalesBench&) = delete;
    TScalesBench& operator=(const TScalesBench&) = delete;

    /// Chooses a family; nothing of it is left in the trace.
    void use(int type)
    {
        scales->SetScalesType(type);
        trace.take();
    }

    /// One read from the scale.
    void feed(const QByteArray& bytes)
    {
        if (port) {
            port->feed(bytes);
        }
    }

    /// Asks for the weight without waiting and forgets how.
    void ask()
    {
        scales->GetWeight(true);
        trace.take();
    }

    /// What happens in each pass of the message loop while the component waits; then 10 ms a pass.
    std::deque<std::function<void()>> Waits;
    int passes = 0;

    /// A step of `Waits`: time passes, then these bytes arrive.
    std::function<void()> arrives(const QByteArray& bytes, qint64 afterMs = 0)
    {
        return [this, bytes, afterMs] {
            clock.advance(afterMs);
            feed(bytes);
        };
    }

    /// Milliseconds that a blocking weighing takes.
    qint64 timeOfWeighing(int* weight = nullptr)
    {
        const qint64 begin = clock.nowMs();
        const int result = scales->GetWeight(false);
        if (weight != nullptr) {
            *weight = result;
        }
        return clock.nowMs() - begin;
    }

    TManualClock clock;
    TScalesRecorder trace;
    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
    std::unique_ptr<TScalesDevice> scales = std::make_unique<TScalesDevice>();

private:
    void wait()
    {
        ++passes;
        if (passes > 100'000) {
            throw std::logic_error("the component waits for ever");
        }
        if (Waits.empty()) {
            clock.advance(10);
            return;
        }
        const auto step = Waits.front();
        Waits.pop_front();
        step();
    }

    void noteRaised(const QString& message, const std::exception_ptr& error)
    {
        try {
            std::rethrow_exception(error);
        } catch (const platform::EConvertError&) {
            trace.note(raised(QStringLiteral("EConvertError"))); // its wording is nobody's concern here
        } catch (...) {
            trace.note(raised(message));
        }
    }

    platform::TExceptionHandler FPreviousHandler;
};

class TScalesTest : public ::testing::Test, protected TScalesBench
{
};

} // namespace tnv5::tests
