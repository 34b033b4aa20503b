#pragma once

#include "support/source_line.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/code_page.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <QPointer>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdexcept>

namespace tnv5::tests {

using platform::TComponent;
using testkit::TManualClock;
using testkit::TMemoryPort;

/// One ordered trace, a line of text for each thing that the component does towards its host, its connector
/// and the monitor. A test injects and then expects, and reads like a transcript.
class TTrace
{
public:
    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;

    void add(const QString& line)
    {
        FLines << line;
        if (OnLine) {
            const auto hook = OnLine;
            hook(line);
        }
    }

    /// Lines since the last call.
    QStringList take() { return std::exchange(FLines, {}); }

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
    QStringList FLines;
};

/// The component with its monitor in the test's hand. Like the component's own sending, which reports through
/// `OnError`, recording a text is a call to the host.
class TTestGate : public d24::TTurnStylerDeviceD24
{
public:
    explicit TTestGate(TTrace& trace, QObject* AOwner = nullptr) : TTurnStylerDeviceD24(AOwner), FTrace(trace)
    {
    }

    void SendToMonitor(const QByteArray& AMess) override
    {
        if (RemoutDevice() != d24::podNone) {
            CallOut([&] { FTrace.add(QStringLiteral("monitor ") + platform::fromWire(AMess)); });
        }
    }

private:
    TTrace& FTrace;
};

/// A link that records the commands and answers as a test says.
class TTestLink : public connector::TDeviceConnector
{
public:
    explicit TTestLink(TTrace& trace) : FTrace(trace) {}

    bool Up = true;                      ///< whether the link is connected
    int Reads = 0;                       ///< how often that was asked
    std::map<QString, QString> Checks;   ///< what a command returns, by its two letters
    std::map<QString, QString> Failures; ///< what a command raises, by its two letters

    bool GetConnected() override
    {
        ++Reads;
        return Up;
    }

    QString SendCommand(const QString& AMess) override
    {
        const QString code = AMess.left(2);
        const auto failure = Failures.find(code);
        const auto check = Checks.find(code);
        const QString raised = failure == Failures.end() ? QString() : failure->second;
        const QString result = check == Checks.end() ? QString() : check->second;
        FTrace.add(QStringLiteral("send ") + AMess); // the link may be gone after this
        if (!raised.isEmpty()) {
            throw platform::EComPort(raised);
        }
        return result;
    }

private:
    TTrace& FTrace;
};

// The controllers of the tests: address of the link, controller and type, as reports show them.

const QString kT = QStringLiteral("10.0.0.5!001T!T");
const QString kG = QStringLiteral("10.0.0.5!002G!G");
const QString kI = QStringLiteral("10.0.0.5!003I!I");

const QString kButton = QStringLiteral("-2-2-2-2-2");
const QString kManual = QStringLiteral("-1-1-1-1-1");

// The lines of a transcript.

inline QString read(const QString& line)
{
    return QStringLiteral("log %Считано с порта*% ") + line;
}

inline QString sent(const QString& command)
{
    return QStringLiteral("send ") + command;
}

inline QString loggedSend(const QString& command)
{
    return QStringLiteral("log %Отправлено на порт% ") + command;
}

/// A report with one state, which is given twice.
inline QString report(const QString& name, const QString& who, const QString& card, const QString& status)
{
    return QStringLiteral("status ") + QStringList{name, who, card, status, status}.join(u'!');
}

inline QString come(const QString& who, const QString& card, const QString& status)
{
    return report("COME", who, card, status);
}

/// The report of a state line.
inline QString heard(const QString& who, const QString& text)
{
    return come(who, "NOCARDNUMBER", text);
}

inline QString looked(const QString& who, const QString& card, const QString& result)
{
    return QStringLiteral("status ") + QStringList{"CHECK", who, card, "RQ", result}.join(u'!');
}

inline QString stack(const QString& who, const QString& card, const QString& status)
{
    return report("STACK", who, card, status);
}

/// A report about a controller as such: a ping, a crossing.
inline QString noted(const QString& who, const QString& status)
{
    return report("STACK", who, QString(), status);
}

inline QString check(const QString& who, const QString& card, const QString& status, int mode)
{
    return QStringLiteral("check %1!%2!%3 mode %4").arg(who, card, status).arg(mode);
}

inline QString monitor(const QString& text)
{
    return QStringLiteral("monitor ") + text;
}

/// What the monitor gets for a line "status ..." of the transcript.
inline QString echoOf(const QString& statusLine)
{
    return QStringLiteral("monitor STATUS!") + statusLine.mid(7) + u'&';
}

const QString kPortClosed = QStringLiteral("error [04] Порт не открыт или не назначен");

/// One component on a scripted link, with the time in the test's hand; every event is recorded, and so is
/// what reaches the host's exception handler.
struct TBench
{
    TBench()
        : FPreviousHandler(platform::setExceptionHandler([this](const QString& message, const auto&) {
              trace.add(QStringLiteral("raised ") + message);
          }))
    {
        gate->SetConnector(link.get());
        attachTexts();
        attachCheckSQL();
    }
    ~TBench() { platform::setExceptionHandler(FPreviousHandler); }
    TBench(const TBench&) = delete;
    TBench& operator=(const TBench&) = delete;

    void attachTexts()
    {
        gate->SetOnLog([this](TComponent* Sender, const QString& Str) { add(Sender, "log " + Str); });
        gate->SetOnError([this](TComponent* Sender, const QString& Str) { add(Sender, "error " + Str); });
        gate->SetOnGetImg([this](TComponent* Sender, const QString& Device, QImage& Img) {
            EXPECT_TRUE(Img.isNull());
            add(Sender, "img " + Device);
        });
        gate->SetOnCheckStatus([this](TComponent* Sender, const QVariant& AName, const QVariant& IP,
                                      const QVariant& Device, const QVariant& DeviceType,
                                      const QVariant& Cardnumber, const QVariant& Status1,
                                      const QVariant& Status2) {
            add(Sender, "status " + joined({AName, IP, Device, DeviceType, Cardnumber, Status1, Status2}));
        });
    }

    void attachCheckSQL()
    {
        gate->SetOnCheckSQL([this](TComponent* Sender, const QVariant& IP, const QVariant& Device,
                                   const QVariant& DeviceType, const QVariant& Cardnumber,
                                   const QVariant& Status, QImage&, const QVariant& AIndex, QVariant& Mess,
                                   QVariant& AResult) {
            EXPECT_EQ(Mess.toString(), QString());
            EXPECT_EQ(AResult.typeId(), int(QMetaType::Int));
            EXPECT_EQ(AResult.toInt(), -1);
            EXPECT_EQ(AIndex.typeId(), int(QMetaType::Int));
            const int mode = AIndex.toInt();
            if (const auto answer = Answers.find(mode); answer != Answers.end()) {
                AResult = answer->second;
            }
            if (Message.isValid()) {
                Mess = Message;
            }
            add(Sender, QStringLiteral("check %1 mode %2")
                            .arg(joined({IP, Device, DeviceType, Cardnumber, Status}))
                            .arg(mode));
        });
    }

    void add(const TComponent* sender, const QString& line)
    {
        EXPECT_EQ(sender, gate.get()) << "wrong sender: " << line.toStdString();
        trace.add(line);
    }

    static QString joined(const QList<QVariant>& values)
    {
        QStringList words;
        for (const QVariant& value : values) {
            EXPECT_EQ(value.typeId(), int(QMetaType::QString));
            words << value.toString();
        }
        return words.join(u'!');
    }

    /// One routed line, through the connector.
    void inject(const QString& line)
    {
        if (link) {
            link->GetCommand(line);
        }
    }

    /// Lets time pass without looking at what happens.
    void skip(qint64 ms)
    {
        clock.advance(ms);
        trace.take();
    }

    /// A pass in the table without a line; the stack timer stays as it is. `who` as in reports.
    d24::PRFidInfo makePass(const QString& who, const QString& card, const QString& status = "NEW")
    {
        const QStringList parts = who.split(u'!');
        const d24::PRFidInfo pass =
            gate->StackItem(gate->p_hw_FindDeviceByRelay(parts[0], parts[1], parts[2], card));
        pass->Status = status;
        return pass;
    }

    /// Starts the stack timer, so that a line runs no pass at once; the table is empty afterwards.
    void startTicks()
    {
        makePass(QStringLiteral("0!000T!T"), "0", "CLOSE");
        inject("x");
        trace.take();
    }

    /// One pass over the table by a direct call.
    void runPass() { gate->p_hw_CallStackArray(); }

    QString statusOf(int index) const
    {
        const d24::PRFidInfo pass = gate->StackItem(index);
        return pass ? pass->Status : QStringLiteral("no pass");
    }

    TManualClock clock;
    TTrace trace;
    /// What the host answers to `OnCheckSQL`, by mode; a missing mode leaves the result as it was preset.
    std::map<int, QVariant> Answers;
    /// What the host puts into `Mess`; an invalid value leaves it.
    QVariant Message;
    std::unique_ptr<TTestLink> link = std::make_unique<TTestLink>(trace);
    std::unique_ptr<TTestGate> gate = std::make_unique<TTestGate>(trace);

private:
    platform::TExceptionHandler FPreviousHandler;
};

class TD24Test : public ::testing::Test, protected TBench
{
};

} // namespace tnv5::tests
