#pragma once

#include "support/bytes.h"
#include "support/fixture.h"
#include "tnv5/bank/serial_bank_pos.h"

#include <stdexcept>

namespace tnv5::tests {

using bank::TBankPos;

/// Fields with FS between them.
QByteArray fields(const QByteArrayList& list);

// The lines of a transcript.

/// A packet in the log.
QString packet(const QByteArray& bytes);
/// An operation event: status, then card, card type, holder, operation, answer, bank type, discount type and
/// discount, then what `Apply` was when it came.
QString told(const QString& status, const QStringList& values, bool apply);
/// The same with nothing known.
QString bare(const QString& status, bool apply = false);

inline const QString kAck = QStringLiteral("write \\x06");
inline const QString kNak = QStringLiteral("write !");
inline const QString kLogRequest = QStringLiteral("log [2] Request for payment is coming...");
inline const QString kLogCancel = QStringLiteral("log [3] Canceling operation...");
inline const QString kLogSent = QStringLiteral("log [4] Payment amount has been sent 1250");
inline const QString kLogWaiting = QStringLiteral("log [5] Waiting answer...");
inline const QString kLogError = QStringLiteral("log [6] Error");
inline const QString kLogConfirmed = QStringLiteral("log [7] Confirmed");

// What a terminal says in the samples of these tests, and hears.

inline const QByteArray kAskAmount = "\x02\x05\x03\x06";
inline const QByteArray kFinish = "\x02\x04\x03\x07";
inline const QByteArray kCardBody =
    fields({"01=4111111111111111", "02=BERG/ANNA", "03=1", "04=VISA", "10=7"});
inline const QByteArray kAnswerBody =
    fields({"01=4111111111111111", "02=BERG/ANNA", "03=1", "04=VISA", "06=00", "10=7", "40=150", "41=CL"});
inline const QStringList kCardValues = {"4111111111111111", "VISA", "BERG/ANNA", "1", "", "7", "", ""};
inline const QStringList kAnswerValues = {
    "4111111111111111", "VISA", "BERG/ANNA", "1", "00", "7", "CL", "150"};
inline const QByteArray kAmountMessage = "\x02"
                                         "05=000000001250\x03=";

/// One component on the port, which is named "COM7", with English messages and the second version.
struct TBankFixture : TPortFixture
{
    TBankFixture();

    /// Assigns all events.
    void attach();

    /// The terminal asks and gets the amount; nothing of it is left in the trace.
    void sendAmount();

    // What the host answers.
    int amount = 1250;
    int discount = 0;
    bool acceptAmount = true;
    bool acceptCard = true;
    bool acceptAnswer = true;
    /// Called last in each operation event.
    std::function<void(const QString& status, bool& apply)> OnApply;

    std::unique_ptr<TBankPos> pos = std::make_unique<TBankPos>();
};

using TBankTest = TTestOn<TBankFixture>;

} // namespace tnv5::tests
