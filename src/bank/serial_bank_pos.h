#pragma once

#include "tnv5/common/bit_text.h"
#include "tnv5/common/string_lrc.h"
#include "tnv5/common/text.h"
#include "tnv5/platform/clock.h"
#include "tnv5/platform/com_data_packet.h"
#include "tnv5/platform/com_port.h"
#include "tnv5/platform/timer.h"

#include <QPointer>
#include <memory>

namespace tnv5::bank {

using platform::TComponent;
using platform::TLogEvent;

/// One step of a payment. `Apply`, false at first, is how the host accepts a card ("START") or an answer
/// ("GET"); it is one variable for all events of a packet.
using TRequestOperation = std::function<void(
    TComponent* Sender, const QString& CardNo, const QString& CardType, const QString& CardHolder,
    const QString& Operation, const QString& Answer, const QString& BankType, bool& Apply,
    const QString& Status, const QString& DiscountType, const QString& Discount)>;

/// The terminal asks for the amount: both numbers are 0 at first and sent as they are when `Apply` is true.
using TRequestAmount = std::function<void(TComponent* Sender, int& Amount, int& Discount, bool& Apply)>;

/// A bank card terminal on a serial port that drives the dialogue itself: asks for the amount, reports the
/// card, then the bank's answer.
///
///     TBankPos pos;
///     pos.SetComport(&port);
///     pos.SetPosType(2);
///     pos.SetTimeOut(1); // units of 1800 s
///     pos.SetCodeOk("00;");
///     pos.SetOnRequestAmount([](auto*, int& Amount, int&, bool& Apply) { Amount = 1250; Apply = true; });
///     pos.SetOnRequestOperation(...); // accept "START" and "GET", note "OK", "ERROR", "TIMEOUT"
///     pos.SetConnection(true);
///
/// Every acknowledgement is written as soon as the handler returns: a handler must decide, not wait. Without
/// handlers everything is refused. Handlers may close the port or destroy the component.
class TBankPos : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(int IDLang READ IDLang WRITE SetIDLang)
    Q_PROPERTY(int PosType READ PosType WRITE SetPosType)
    Q_PROPERTY(tnv5::platform::TComPort* ComPort READ ComPort WRITE SetComport)
    Q_PROPERTY(int TimeOut READ TimeOut WRITE SetTimeOut)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::platform::TLogEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(
        tnv5::bank::TRequestOperation OnRequestOperation READ OnRequestOperation WRITE SetOnRequestOperation)
    Q_PROPERTY(tnv5::bank::TRequestAmount OnRequestAmount READ OnRequestAmount WRITE SetOnRequestAmount)
    Q_PROPERTY(QString CodeError READ CodeError WRITE SetCodeError)
    Q_PROPERTY(QString CodeOk READ CodeOk WRITE SetCodeOk)

public:
    explicit TBankPos(QObject* AOwner = nullptr);
    ~TBankPos() override;

    /// Language of messages: 0 Russian, 1 Ukrainian, 2 English; any other: empty texts.
    int IDLang() const { return FIDLang; }
    void SetIDLang(int Value) { FIDLang = Value; }

    /// Number of the terminal's version, 1 to 3 (see `GetPosList`); any other: nothing is heard.
    int PosType() const { return FPosType; }
    void SetPosType(int Value) { FPosType = Value; }

    /// The port; not owned.
    platform::TComPort* ComPort() const { return FComport; }
    void SetComport(platform::TComPort* Value);

    /// How long the terminal may be silent once it has the amount, in units of 1800 seconds. With 0, as at
    /// first, "TIMEOUT" comes within two seconds.
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int Value) { FTimeOut = Value; }

    const TLogEvent& OnLog() const { return FLogEvent; }
    void SetOnLog(TLogEvent Value) { FLogEvent = std::move(Value); }
    const TLogEvent& OnError() const { return FErrorEvent; }
    void SetOnError(TLogEvent Value) { FErrorEvent = std::move(Value); }
    const TRequestOperation& OnRequestOperation() const { return FRequestOperation; }
    void SetOnRequestOperation(TRequestOperation Value) { FRequestOperation = std::move(Value); }
    const TRequestAmount& OnRequestAmount() const { return FRequestAmount; }
    void SetOnRequestAmount(TRequestAmount Value) { FRequestAmount = std::move(Value); }

    /// Answer codes that mean failure, each followed by ";". A code and its ";" are looked for as a plain
    /// part of the list: "00" is in "000;".
    QString CodeError() const { return FCodeError; }
    void SetCodeError(const QString& Value) { FCodeError = Value; }
    /// Answer codes that mean approval, in the same form.
    QString CodeOk() const { return FCodeOk; }
    void SetCodeOk(const QString& Value) { FCodeOk = Value; }

    bool IsConnected() const { return FComport && FComport->Connected(); }
    /// Sets up and opens the port, or closes it. False without a port (reported) or when that fails
    /// (reported).
    bool SetConnection(bool AOpen);
    /// Replaces the list by the names of the versions; the index is the number of the version.
    void GetPosList(QStringList& AValue) const;
    /// Sets the port to 9600 baud, 8 data bits, no parity, 1 stop bit, no read gap; nothing without a
    /// version.
    void SetUpComport();

    /// Message of an index, counted from 0, in the language of `IDLang`.
    QString GetMessage(int AIndex) const;

    /// The value of a tag such as "06=" in a packet; empty without the tag or without a version.
    QString CutValue(const QString& APacket, const QString& ATag) const;
    /// `ACount` copies of a character; empty for a count below 1.
    static QString MakeStr(QChar AChar, int ACount);
    static int StringLRC(const QString& AText) { return common::StringLRC(AText); }
    // The same conversions as in the scales; the protocol does not need them.
    static QString ReplaceStr(const QString& AText, const QString& AOld, const QString& ANew)
    {
        return common::ReplaceStr(AText, AOld, ANew);
    }
    static QString ByteToBinStr(uchar AValue) { return common::ByteToBinStr(AValue); }
    static int BitToint(const QString& ABits) { return common::BitToint(ABits); }
    static uchar BinStrToByte(const QString& ABits) { return common::BinStrToByte(ABits); }

private:
    struct TFields;

    void CustomStart(const QByteArray& buffer, qsizetype& position) const;
    void CustomStop(const QByteArray& buffer, qsizetype& position) const;
    void CustomPacket(const QByteArray& bytes);
    void OnSendSymbolTimer();
    TFields fieldsOf(const QString& packet) const;
    void handle(const QString& packet);
    void requestAmount(bool& apply);
    void sendAmount(int amount, int discount, bool& apply);
    void takeAnswer(const TFields& fields, bool& apply);
    void judgeAnswer(const TFields& fields, bool& apply);
    void takeCard(const TFields& fields, bool& apply);
    void raise(const TFields& fields, bool& apply, const QString& status);
    void acknowledge(bool accepted);
    void write(const QByteArray& bytes);
    void log(const QString& text);

    QString FLastCommand; // "" idle, "WAIT" the answer is awaited, "GET" it has come
    platform::TDateTime FLastAsk;
    QPointer<platform::TComPort> FComport;
    std::unique_ptr<platform::TTimer> FCheckTime;
    TLogEvent FErrorEvent;
    TLogEvent FLogEvent;
    int FIDLang = 0;
    std::unique_ptr<platform::TComDataPacket> ComDataPacket;
    int FTimeOut = 0;
    int FPosType = 0;
    TRequestAmount FRequestAmount;
    TRequestOperation FRequestOperation;
    QString FCodeError;
    QString FCodeOk;
};

} // namespace tnv5::bank
