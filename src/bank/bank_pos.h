#pragma once

#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/component.h"

namespace tnv5::bank {

using platform::TComponent;
using platform::TLogEvent;

/// Errors and statuses: a number and a text for people.
using TStatusEvent = std::function<void(TComponent* Sender, int ACode, const QString& AStr)>;

/// The name under which the control of back-end 2 is created, as the others are by their ProgID. Its events
/// are "OnMsgReceived" (a text) and "OnTrxComplete" (a number).
inline const QString kControlClass = QStringLiteral("TAxECRClass98");

/// Card payments and reports through one of five outside terminal libraries, each an automation object.
///
///     TBankPOS pos;
///     pos.SetPosType(1);
///     pos.SetComPort(3);
///     pos.SetOnStatus([](auto*, int, const QString& text) { show(text); });
///     pos.SetOnError([](auto*, int code, const QString& text) { complain(code, text); });
///     if (pos.Init() && pos.Connect() && pos.Purchase(1250, 0, 1)) { ... pos.RRN() ... }
///
/// Operations return when they are over; while they wait, the message loop of the host runs. They are true
/// only on success; what went wrong goes to `OnError` and stays in `LastError` and `LastErrorMsg`. False does
/// not say that nothing was charged: docs/payment-outcome.md tells what to do then.
///
/// Handlers may do anything, but should not begin another operation while one waits. What a handler raises
/// ends the operation and goes to its caller, inside an event of the control to the host's exception handler.
/// Amounts are in the units of the library.
class TBankPOS : public TComponent
{
    Q_OBJECT
    Q_PROPERTY(int PosType READ PosType WRITE SetPosType)
    Q_PROPERTY(QString logfile READ logfile WRITE Setlogfile)
    Q_PROPERTY(bool log READ log WRITE Setlog)
    Q_PROPERTY(int ComPort READ ComPort WRITE SetComPort)
    Q_PROPERTY(int ComPortRate READ ComPortRate WRITE SetComPortRate)
    Q_PROPERTY(QString IP READ IP WRITE SetIP)
    Q_PROPERTY(int IPPort READ IPPort WRITE SetIPPort)
    Q_PROPERTY(int TimeOut READ TimeOut WRITE SetTimeOut)
    Q_PROPERTY(int Language READ Language WRITE SetLanguage)
    Q_PROPERTY(QString RRN READ RRN WRITE SetRRN)
    Q_PROPERTY(QString TransactionID READ TransactionID WRITE SetTransactionID)
    Q_PROPERTY(QString AuthID READ AuthID WRITE SetAuthID)
    Q_PROPERTY(QString PAN READ PAN WRITE SetPAN)
    Q_PROPERTY(QString IssuerName READ IssuerName WRITE SetIssuerName)
    Q_PROPERTY(QString MerchantID READ MerchantID WRITE SetMerchantID)
    Q_PROPERTY(QString TerminalID READ TerminalID WRITE SetTerminalID)
    Q_PROPERTY(QString DeviceModelName READ DeviceModelName WRITE SetDeviceModelName)
    Q_PROPERTY(QString DeviceSerialNumber READ DeviceSerialNumber WRITE SetDeviceSerialNumber)
    Q_PROPERTY(QString DeviceSoftVer READ DeviceSoftVer WRITE SetDeviceSoftVer)
    Q_PROPERTY(QString DeviceTerminalID READ DeviceTerminalID WRITE SetDeviceTerminalID)
    Q_PROPERTY(QString LibVersion READ LibVersion WRITE SetLibVersion)
    Q_PROPERTY(int LastError READ GetLastError)
    Q_PROPERTY(QString LastErrorMsg READ LastErrorMsg)
    Q_PROPERTY(int LastStatus READ GetLastStatus)
    Q_PROPERTY(QString LastStatusMsg READ LastStatusMsg)
    Q_PROPERTY(QString TotalsDebitAmt READ TotalsDebitAmt WRITE SetTotalsDebitAmt)
    Q_PROPERTY(QString TotalsDebitNum READ TotalsDebitNum WRITE SetTotalsDebitNum)
    Q_PROPERTY(QString TotalsCreditAmt READ TotalsCreditAmt WRITE SetTotalsCreditAmt)
    Q_PROPERTY(QString TotalsCreditNum READ TotalsCreditNum WRITE SetTotalsCreditNum)
    Q_PROPERTY(QString TotalsCancelledAmt READ TotalsCancelledAmt WRITE SetTotalsCancelledAmt)
    Q_PROPERTY(QString TotalsCancelledNum READ TotalsCancelledNum WRITE SetTotalsCancelledNum)
    Q_PROPERTY(tnv5::platform::TLogEvent OnLog READ OnLog WRITE SetOnLog)
    Q_PROPERTY(tnv5::bank::TStatusEvent OnError READ OnError WRITE SetOnError)
    Q_PROPERTY(tnv5::bank::TStatusEvent OnStatus READ OnStatus WRITE SetOnStatus)

public:
    explicit TBankPOS(QObject* AOwner = nullptr);
    ~TBankPOS() override;

    /// The library, 0 to 4; any other: operations fail and do nothing.
    int PosType() const { return FPosType; }
    void SetPosType(int Value) { FPosType = Value; }
    /// File of the library's own log; takes effect at `Init`, as the next two do.
    QString logfile() const { return flogfile; }
    void Setlogfile(const QString& Value) { flogfile = Value; }
    /// Whether the library keeps a log.
    bool log() const { return flog; }
    void Setlog(bool Value) { flog = Value; }
    /// How long the customer may take, in the units of back-end 0, which alone is told; 0: its own limit.
    int TimeOut() const { return FTimeOut; }
    void SetTimeOut(int Value) { FTimeOut = Value; }
    /// Language of the error texts of back-end 1, in its numbers.
    int Language() const { return FLanguage; }
    void SetLanguage(int Value) { FLanguage = Value; }
    /// Number of the serial port, used when `IP` is empty; takes effect at `Connect`, as the next three do.
    int ComPort() const { return fComPort; }
    void SetComPort(int Value) { fComPort = Value; }
    int ComPortRate() const { return fComPortRate; }
    void SetComPortRate(int Value) { fComPortRate = Value; }
    /// Address of a terminal on the network; empty: it is on the serial port.
    QString IP() const { return fIP; }
    void SetIP(const QString& Value) { fIP = Value; }
    int IPPort() const { return fIPport; }
    void SetIPPort(int Value) { fIPport = Value; }

    // Results, as the library gives them. They stay until the next operation that has some, so a host that
    // wants to be sure whose they are empties them first.

    QString RRN() const { return FRRN; }
    void SetRRN(const QString& Value) { FRRN = Value; }
    QString TransactionID() const { return FTransactionID; }
    void SetTransactionID(const QString& Value) { FTransactionID = Value; }
    QString AuthID() const { return FAuthID; }
    void SetAuthID(const QString& Value) { FAuthID = Value; }
    /// Number of the card, as far as the library tells it.
    QString PAN() const { return FPAN; }
    void SetPAN(const QString& Value) { FPAN = Value; }
    QString IssuerName() const { return FIssuerName; }
    void SetIssuerName(const QString& Value) { FIssuerName = Value; }
    QString MerchantID() const { return FMerchantID; }
    void SetMerchantID(const QString& Value) { FMerchantID = Value; }
    QString TerminalID() const { return FTerminalID; }
    void SetTerminalID(const QString& Value) { FTerminalID = Value; }
    QString DeviceModelName() const { return FDeviceModelName; }
    void SetDeviceModelName(const QString& Value) { FDeviceModelName = Value; }
    QString DeviceSerialNumber() const { return FDeviceSerialNumber; }
    void SetDeviceSerialNumber(const QString& Value) { FDeviceSerialNumber = Value; }
    QString DeviceSoftVer() const { return FDeviceSoftVer; }
    void SetDeviceSoftVer(const QString& Value) { FDeviceSoftVer = Value; }
    QString DeviceTerminalID() const { return FDeviceTerminalID; }
    void SetDeviceTerminalID(const QString& Value) { FDeviceTerminalID = Value; }
    QString LibVersion() const { return FLibVersion; }
    void SetLibVersion(const QString& Value) { FLibVersion = Value; }
    QString TotalsDebitAmt() const { return FTotalsDebitAmt; }
    void SetTotalsDebitAmt(const QString& Value) { FTotalsDebitAmt = Value; }
    QString TotalsDebitNum() const { return FTotalsDebitNum; }
    void SetTotalsDebitNum(const QString& Value) { FTotalsDebitNum = Value; }
    QString TotalsCreditAmt() const { return FTotalsCreditAmt; }
    void SetTotalsCreditAmt(const QString& Value) { FTotalsCreditAmt = Value; }
    QString TotalsCreditNum() const { return FTotalsCreditNum; }
    void SetTotalsCreditNum(const QString& Value) { FTotalsCreditNum = Value; }
    QString TotalsCancelledAmt() const { return FTotalsCancelledAmt; }
    void SetTotalsCancelledAmt(const QString& Value) { FTotalsCancelledAmt = Value; }
    QString TotalsCancelledNum() const { return FTotalsCancelledNum; }
    void SetTotalsCancelledNum(const QString& Value) { FTotalsCancelledNum = Value; }

    /// Code of the last error: -1 for the component's own, else the library's.
    int GetLastError() const { return AXErrorCode; }
    QString LastErrorMsg() const { return FLastErrorMsg; }
    /// Code of the last status event.
    int GetLastStatus() const { return FLastStatus; }
    QString LastStatusMsg() const { return FLastStatusMsg; }

    const TLogEvent& OnLog() const { return FLogEvent; }
    void SetOnLog(TLogEvent Value) { FLogEvent = std::move(Value); }
    const TStatusEvent& OnError() const { return FErrorEvent; }
    void SetOnError(TStatusEvent Value) { FErrorEvent = std::move(Value); }
    const TStatusEvent& OnStatus() const { return FStatusEvent; }
    void SetOnStatus(TStatusEvent Value) { FStatusEvent = std::move(Value); }

    /// Creates the library's object, once, and tells it how to log. An object whose settings fail stays.
    bool Init();
    bool IsInit() const { return EcrInst != nullptr; }
    /// The library's object, none before `Init`; for what a host wants from it beyond the operations.
    platform::automation::TObjectPtr Instance() const { return EcrInst; }
    bool Connect();
    bool Disconnect();
    /// Fills the properties `Device...`.
    bool DeviceInfo();
    /// Asks the terminal, and where the library can, the bank; the log tells which of the two answers.
    bool Test();
    /// Takes a payment. @param IDMarchant the merchant's index in the terminal
    bool Purchase(int Amount, int Discount, int IDMarchant);
    /// Pays out money against a card; back-end 1 only. The discount is not used.
    bool CashAdvance(int Amount, int Discount, int IDMarchant);
    /// Gives back a payment, or cancels it, by its reference number and authorisation.
    bool PurchaseReturn(int Amount, const QString& RRN, const QString& AuthID, int IDMarchant);
    /// A report of the day so far, which goes on.
    bool XReport(int IDMarchant);
    /// Ends the day.
    bool ZReport(int IDMarchant);
    /// The merchant's number by its index; "-1" when there is none. Back-end 4 only.
    QString GetMerchantID(int AIdx);

    /// Waits for the library's result and tells whether it is a success; back-ends 0, 1 and 2. Back-end 4 has
    /// nothing to wait for here.
    bool _WaitResponse(); // NOLINT(bugprone-reserved-identifier): its name
    /// Tells and keeps an error.
    void ShowError(int ACode, const QString& AStr);
    /// Events of the control.
    void _OnMsgReceived(const QString& AStr); // NOLINT(bugprone-reserved-identifier)
    void _OnTrxComplete(int ACode);           // NOLINT(bugprone-reserved-identifier)
    /// Logs the fields of a response of back-end 4 and keeps three of them.
    bool VarifonePrintResponse();

    /// A field of a response of back-end 3, counted from 1, between ";" or blanks; "-1" for an empty one.
    static QString parseblue(const QString& Text, int N);
    static QString parseblueex(const QString& Text, int N);
    /// The text of an error code of back-end 3; empty for a code that is none.
    static QString errorblue(const QString& ACode);

private:
    friend class TPosDesk;

    template <class Result, class Body>
    Result perform(const QString& startText, Body&& body, const Result& ifFailed);
    bool createInstance();
    void hear(std::u16string_view event, const platform::automation::TArguments& arguments);

    platform::automation::TObjectPtr EcrInst;
    platform::automation::TObjectPtr EcrInstAx98; // the control of back-end 2, which is also `EcrInst` then
    QString FLastStatusMsg;
    int fComPort = 0;
    QString FLastErrorMsg;
    int FPosType = 0;
    int fIPport = 0;
    QString FLibVersion;
    QString FDeviceSerialNumber;
    int fComPortRate = 0;
    QString FDeviceSoftVer;
    bool flog = false;
    QString flogfile;
    TStatusEvent FErrorEvent;
    QString FDeviceTerminalID;
    QString FDeviceModelName;
    QString fIP;
    TLogEvent FLogEvent;
    TStatusEvent FStatusEvent;
    int FLanguage = 0;
    int FTimeOut = 0;
    int AXErrorCode = 0;
    QString FRRN;
    QString FTransactionID;
    QString FAuthID;
    QString FTotalsCancelledAmt;
    QString FTotalsCreditNum;
    QString FTotalsCreditAmt;
    QString FTotalsDebitNum;
    QString FTotalsDebitAmt;
    QString FTotalsCancelledNum;
    QString FPAN;
    QString FTerminalID;
    QString FMerchantID;
    QString FIssuerName;
    int FLastStatus = 0;
};

} // namespace tnv5::bank
