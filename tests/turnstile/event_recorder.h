#pragma once

#include "support/source_line.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace tnv5::tests {

using platform::TComponent;
using testkit::TManualClock;
using testkit::TMemoryPort;

/// The component with its remote side in the test's hand.
class TTestGate : public turnstile::TTurnStylerDevice
{
public:
    using TTurnStylerDevice::TTurnStylerDevice;

    std::function<void(const QString& message)> OnEcho;
    std::function<void(const QString& line)> OnForward;
    std::optional<bool> Ready; ///< answer of `Connected`; unset: the component's own
    int ConnectedCalls = 0;

    bool Connected() override
    {
        ++ConnectedCalls;
        return Ready ? *Ready : TTurnStylerDevice::Connected();
    }

    void ServerEcho(const QString& AMess) override
    {
        if (RemoutDevice() == turnstile::podServer && OnEcho) {
            OnEcho(AMess);
        }
    }

protected:
    void ForwardLine(const QString& AMess) override
    {
        if (OnForward) {
            OnForward(AMess);
        }
    }
};

/// Keeps one ordered trace, a line of text for each thing that the component does towards its host, its port
/// and the remote side. A test injects and then expects, and reads like a transcript.
class TEventRecorder
{
public:
    /// What the host answers to `OnCheckSQL`, by mode; a missing mode leaves the result as it was preset.
    std::map<int, QVariant> Answers;

    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;

    /// Assigns all events. The recorder must outlive the component.
    void attach(TTestGate& gate)
    {
        attachTexts(gate);
        gate.SetOnCheckStatus([this, &gate](TComponent* Sender, const QVariant& AName, const QVariant& Device,
                                            const QVariant& Cardnumber, const QVariant& Status1,
                                            const QVariant& Status2) {
            QStringList words{QStringLiteral("status")};
            for (const QVariant& value : {AName, Device, Cardnumber, Status1, Status2}) {
                EXPECT_EQ(value.typeId(), int(QMetaType::QString));
                words << value.toString();
            }
            add(Sender == &gate, words.join(u' '));
        });
        gate.SetOnCheckSQL([this, &gate](TComponent* Sender, const QVariant& Device,
                                         const QVariant& Cardnumber, const QVariant& Status, QImage&,
                                         const QVariant& AIndex, QVariant& AResult) {
            const QString line = QStringLiteral("check %1 %2 %3 mode %4 preset %5")
                                     .arg(Device.toString(), Cardnumber.toString(), Status.toString(),
                                          AIndex.toString(), AResult.toString());
            if (const auto answer = Answers.find(AIndex.toInt()); answer != Answers.end()) {
                AResult = answer->second;
            }
            add(Sender == &gate, line);
        });
    }

    /// Records what is written, byte for byte.
    void attach(TMemoryPort& port)
    {
        port.OnWritten = [this](const QByteArray& bytes) {
            add(true,
                QStringLiteral("write ") + platform::fromWire(bytes).replace(u'\r', QStringLiteral("\\r")));
        };
    }

    /// One event of the component.
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

    /// Lines since the last call.
    QStringList take() { return std::exchange(FLines, {}); }
    qsizetype count() const { return FLines.size(); }
    /// How many lines since the last `take` or `expect` begin like this.
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
    void attachTexts(TTestGate& gate)
    {
        gate.SetOnLog([this, &gate](TComponent* Sender, const QString& Str) {
            add(Sender == &gate, QStringLiteral("log ") + Str);
        });
        gate.SetOnError([this, &gate](TComponent* Sender, const QString& Str) {
            add(Sender == &gate, QStringLiteral("error ") + Str);
        });
        gate.SetOnGetImg([this, &gate](TComponent* Sender, const QString& Device, QImage& Img) {
            EXPECT_TRUE(Img.isNull());
            add(Sender == &gate, QStringLiteral("img ") + Device);
        });
        gate.OnEcho = [this](const QString& message) { add(true, QStringLiteral("echo ") + message); };
        gate.OnForward = [this](const QString& line) { add(true, QStringLiteral("forward ") + line); };
    }

    QStringList FLines;
};

// The lines of a transcript.

inline QString read(const QString& line)
{
    return QStringLiteral("log %Считано с порта% ") + line;
}

inline QString sent(const QString& command)
{
    return QStringLiteral("log %Отправлено на порт% ") + command;
}

/// The bytes of a command with its checksum; the carriage return is added here.
inline QString wrote(const QString& command)
{
    return QStringLiteral("write ") + command + QStringLiteral("\\r");
}

inline QString come(const QString& device, const QString& card, const QString& status)
{
    return QStringLiteral("status COME %1 %2 %3 %3").arg(device, card, status);
}

/// A report of a "#" line.
inline QString heard(const QString& device, const QString& text)
{
    return come(device, QStringLiteral("NOCARDNUMBER"), text);
}

inline QString looked(const QString& device, const QString& card, const QString& result)
{
    return QStringLiteral("status CHECK %1 %2 R %3").arg(device, card, result);
}

inline QString stack(const QString& device, const QString& card, const QString& status)
{
    return QStringLiteral("status STACK %1 %2 %3 %3").arg(device, card, status);
}

inline QString check(const QString& device, const QString& card, const QString& status, int mode)
{
    return QStringLiteral("check %1 %2 %3 mode %4 preset -1").arg(device, card, status).arg(mode);
}

const QString kButtonCard = QStringLiteral("-2-2-2-2-2");
const QString kManualCard = QStringLiteral("-1-1-1-1-1");
const QString kPortClosed = QStringLiteral("error [04] Порт не открыт или не назначен");

/// One component on one open port in memory, with the time in the test's hand: 01A, 01D and 02A are listed,
/// every event is recorded, and so is what reaches the host's exception handler.
struct TGateBench
{
    TGateBench()
        : FPreviousHandler(platform::setExceptionHandler([this](const QString& message, const auto&) {
              trace.note(QStringLiteral("raised ") + message);
          }))
    {
        gate->SetDeviceList({"01A", "01D", "02A"});
        gate->SetComport(port.get());
        port->Open();
        trace.attach(*gate);
        trace.attach(*port);
    }
    ~TGateBench() { platform::setExceptionHandler(FPreviousHandler); }
    TGateBench(const TGateBench&) = delete;
    TGateBench& operator=(const TGateBench&) = delete;

    /// One line from the controllers.
    void inject(const QString& line)
    {
        if (port) {
            port->feed(platform::toWire(line) + '\r');
        }
    }

    /// Lets time pass without looking at what happens.
    void skip(qint64 ms)
    {
        clock.advance(ms);
        trace.take();
    }

    /// A pass in the table without a line; the stack timer stays as it is.
    turnstile::PRFidInfo makePass(const QString& device, const QString& card, const QString& status = "NEW")
    {
        const turnstile::PRFidInfo pass = gate->StackItem(gate->p_hw_FindDeviceByRelay(device, card));
        pass->Status = status;
        return pass;
    }

    /// A card that was let in and acknowledged; nothing of it is left in the trace.
    turnstile::PRFidInfo openPass(const QString& device)
    {
        trace.Answers[0] = 1;
        inject(u'$' + device + "R77");
        const turnstile::PRFidInfo pass = gate->StackItem(gate->p_hw_FindDevice(device));
        if (pass->Status == "NEW") { // the timer was running already: no pass at once
            clock.advance(100);
        }
        inject(u'#' + device + "Relay 1");
        trace.take();
        return pass;
    }

    QString statusOf(int index) const
    {
        const turnstile::PRFidInfo pass = gate->StackItem(index);
        return pass ? pass->Status : QStringLiteral("no pass");
    }

    TManualClock clock;
    TEventRecorder trace;
    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
    std::unique_ptr<TTestGate> gate = std::make_unique<TTestGate>();

private:
    platform::TExceptionHandler FPreviousHandler;
};

class TGateTest : public ::testing::Test, protected TGateBench
{
};

} // namespace tnv5::tests
