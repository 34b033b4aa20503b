#pragma once

#include "support/source_line.h"
#include "tnv5/bank/serial_bank_pos.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tnv5::tests {

using bank::TBankPos;
using platform::TComponent;
using testkit::TManualClock;
using testkit::TMemoryPort;

/// Bytes with zeroes in them.
inline QByteArray operator""_b(const char* bytes, size_t size)
{
    return {bytes, qsizetype(size)};
}

/// A frame around a body: STX, body, ETX and the XOR of everything between STX and the check byte.
inline QByteArray framed(const QByteArray& body)
{
    char check = 0x03;
    for (const char byte : body) {
        check = char(check ^ byte);
    }
    return "\x02" + body + "\x03" + check;
}

/// Fields with FS between them.
inline QByteArray fields(const QByteArrayList& list)
{
    return list.join('\x1C');
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

// The lines of a transcript.

inline QString logged(const QString& text)
{
    return QStringLiteral("log ") + shown(text);
}

inline QString packet(const QByteArray& bytes)
{
    return logged(QStringLiteral("Operation ") + QString::fromLatin1(bytes));
}

inline QString failed(const QString& text)
{
    return QStringLiteral("error ") + shown(text);
}

inline QString wrote(const QByteArray& bytes)
{
    return QStringLiteral("write ") + shown(QString::fromLatin1(bytes));
}

inline QString raised(const QString& message)
{
    return QStringLiteral("raised ") + shown(message);
}

/// An operation event: status, then card, card type, holder, operation, answer, bank type, discount type and
/// discount, then what `Apply` was when it came.
inline QString told(const QString& status, const QStringList& values, bool apply)
{
    return QStringLiteral("%1 %2 apply=%3").arg(status, shown(values.join(u'|'))).arg(int(apply));
}

/// The same with nothing known.
inline QString bare(const QString& status, bool apply = false)
{
    return told(status, {{}, {}, {}, {}, {}, {}, {}, QStringLiteral("0")}, apply);
}

const QString kAck = QStringLiteral("write \\x06");
const QString kNak = QStringLiteral("write !");
const QByteArray kAskAmount = "\x02\x05\x03\x06";
const QByteArray kFinish = "\x02\x04\x03\x07";

/// Keeps one ordered trace of what the component tells its host and its port, and answers as it is told to.
class TBankRecorder
{
public:
    int amount = 1250;
    int discount = 0;
    bool acceptAmount = true;
    bool acceptCard = true;
    bool acceptAnswer = true;

    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;
    /// Called last in each operation event.
    std::function<void(const QString& status, bool& apply)> OnApply;

    /// Assigns all events. The recorder must outlive the component.
    void attach(TBankPos& pos)
    {
        pos.SetOnLog(
            [this, &pos](TComponent* Sender, const QString& Str) { add(Sender == &pos, logged(Str)); });
        pos.SetOnError(
            [this, &pos](TComponent* Sender, const QString& Str) { add(Sender == &pos, failed(Str)); });
        pos.SetOnRequestOperation([this, &pos](TComponent* Sender, const QString& CardNo,
                                               const QString& CardType, const QString& CardHolder,
                                               const QString& Operation, const QString& Answer,
                                               const QString& BankType, bool& Apply, const QString& Status,
                                               const QString& DiscountType, const QString& Discount) {
            const QString status = Status;
            const QStringList values = {CardNo, CardType, CardHolder,   Operation,
                                        Answer, BankType, DiscountType, Discount};
            const QString line = told(Status, values, Apply);
            if (status == u"START") {
                Apply = acceptCard;
            } else if (status == u"GET") {
                Apply = acceptAnswer;
            }
            if (OnApply) {
                OnApply(status, Apply);
            }
            add(Sender == &pos, line);
        });
        pos.SetOnRequestAmount([this, &pos](TComponent* Sender, int& Amount, int& Discount, bool& Apply) {
            const QString line =
                QStringLiteral("amount %1 %2 apply=%3").arg(Amount).arg(Discount).arg(int(Apply));
            Amount = amount;
            Discount = discount;
            Apply = acceptAmount;
            add(Sender == &pos, line);
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
struct TBankBench
{
    explicit TBankBench(qint64 startMs = TManualClock::at(12, 0)) : clock(startMs)
    {
        FPreviousHandler = platform::setExceptionHandler(
            [this](const QString& message, const std::exception_ptr&) { trace.note(raised(message)); });
        pos->SetIDLang(2);
        pos->SetPosType(2);
        pos->SetTimeOut(1);
        pos->SetCodeOk(QStringLiteral("00;10;"));
        pos->SetCodeError(QStringLiteral("05;51;"));
        port->SetPort(QStringLiteral("COM7"));
        pos->SetComport(port.get());
        port->Open();
        trace.attach(*pos);
        trace.attach(*port);
    }
    ~TBankBench() { platform::setExceptionHandler(FPreviousHandler); }
    TBankBench(const TBankBench&) = delete;
    TBankBench& operator=(const TBankBench&) = delete;

    /// One read from the terminal.
    void feed(const QByteArray& bytes)
    {
        if (port) {
            port->feed(bytes);
        }
    }

    /// The terminal asks and gets the amount; nothing of it is left in the trace.
    void sendAmount()
    {
        feed(kAskAmount);
        trace.take();
    }

    TManualClock clock;
    TBankRecorder trace;
    std::unique_ptr<TMemoryPort> port = std::make_unique<TMemoryPort>();
    std::unique_ptr<TBankPos> pos = std::make_unique<TBankPos>();

private:
    platform::TExceptionHandler FPreviousHandler;
};

class TBankTest : public ::testing::Test, protected TBankBench
{
};

// What a terminal says in the samples of these tests.

const QByteArray kCardBody = fields({"01=4111111111111111", "02=BERG/ANNA", "03=1", "04=VISA", "10=7"});
const QByteArray kAnswerBody =
    fields({"01=4111111111111111", "02=BERG/ANNA", "03=1", "04=VISA", "06=00", "10=7", "40=150", "41=CL"});
const QStringList kCardValues = {"4111111111111111", "VISA", "BERG/ANNA", "1", "", "7", "", ""};
const QStringList kAnswerValues = {"4111111111111111", "VISA", "BERG/ANNA", "1", "00", "7", "CL", "150"};
const QByteArray kAmountMessage = "\x02"
                                  "05=000000001250\x03=";

const QString kLogRequest = QStringLiteral("log [2] Request for payment is coming...");
const QString kLogCancel = QStringLiteral("log [3] Canceling operation...");
const QString kLogSent = QStringLiteral("log [4] Payment amount has been sent 1250");
const QString kLogWaiting = QStringLiteral("log [5] Waiting answer...");
const QString kLogError = QStringLiteral("log [6] Error");
const QString kLogConfirmed = QStringLiteral("log [7] Confirmed");

} // namespace tnv5::tests
