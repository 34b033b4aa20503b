#pragma once

#include "model/kit/model_world.h"
#include "model/kit/texts.h"

#include <QStringList>

namespace tnv5::bank::model {

using namespace modelkit;

/// The published properties that hold text.
inline constexpr const char* kTextProperties[] = {"logfile",
                                                  "IP",
                                                  "RRN",
                                                  "TransactionID",
                                                  "AuthID",
                                                  "PAN",
                                                  "IssuerName",
                                                  "MerchantID",
                                                  "TerminalID",
                                                  "DeviceModelName",
                                                  "DeviceSerialNumber",
                                                  "DeviceSoftVer",
                                                  "DeviceTerminalID",
                                                  "LibVersion",
                                                  "LastErrorMsg",
                                                  "LastStatusMsg",
                                                  "TotalsDebitAmt",
                                                  "TotalsDebitNum",
                                                  "TotalsCreditAmt",
                                                  "TotalsCreditNum",
                                                  "TotalsCancelledAmt",
                                                  "TotalsCancelledNum"};

/// A library as the model sees it; the stage is behind it.
struct TModelLibrary
{
    /// A call; `outs` has the arguments by reference before and after it.
    std::function<QVariant(const QString& name, const QVariantList& ins, QVariantList& outs)> call;
    std::function<void(const QString& name, const QVariant& value)> put;
    std::function<int(const QString& name)> constant;
    /// Creates the object of a type.
    std::function<void(int type)> create;
    /// Who hears the control's events.
    std::function<void(const QString& name, const QVariant& value)> listener;
};

/// What the component of the automation bank terminals does, told once more. Its names are those of the
/// component.
class TModelPos final : public TModel
{
public:
    using TText = std::function<void(TModel*, const QString&)>;
    using TCode = std::function<void(TModel*, int, const QString&)>;

    TModelPos(TModelWorld& world, bool designing);
    void die() override;

    TModelLibrary* Library = nullptr;

    void SetOnLog(TText event) { FOnLog = std::move(event); }
    void SetOnError(TCode event) { FOnError = std::move(event); }
    void SetOnStatus(TCode event) { FOnStatus = std::move(event); }

    bool IsInit() const { return FCreated; }
    bool Init();
    bool Connect();
    bool Disconnect();
    bool DeviceInfo();
    bool Test();
    bool Purchase(int amount, int discount, int merchant);
    bool CashAdvance(int amount, int discount, int merchant);
    bool PurchaseReturn(int amount, const QString& rrn, const QString& authId, int merchant);
    bool XReport(int merchant);
    bool ZReport(int merchant);
    QString GetMerchantID(int index);
    bool _WaitResponse(); // NOLINT(bugprone-reserved-identifier)
    bool VarifonePrintResponse();
    void ShowError(int code, const QString& text);
    void _OnMsgReceived(const QString& text); // NOLINT(bugprone-reserved-identifier)
    void _OnTrxComplete(int code);            // NOLINT(bugprone-reserved-identifier)

private:
    /// A call that failed.
    struct TBroken
    {
        QString text;
    };

    template <class Result, class Body>
    Result run(const char* begins, Body&& body, Result ifFailed);

    static int numberFrom(const QVariant& value);
    QVariant ask(const QString& name, const QVariantList& ins = {}, QVariantList* outs = nullptr);
    bool askTruth(const QString& name, const QVariantList& ins, QVariantList* outs = nullptr);
    int askNumber(const QString& name, const QVariantList& ins = {});
    void write(const QString& name, const QVariant& value);
    int named(const QString& name);
    void keep(const char* property, const QVariant& value);
    QString kept(const char* name) const { return property(name).toString(); }
    int type() const { return property("PosType").toInt(); }
    void log(const QString& text) { fire(FOnLog, this, text); }
    void status(int code, const QString& text);
    void error(int code, const QString& text);
    bool says(bool good, const char* yes, const char* no);

    bool waitForResult();
    bool askUntilOver(bool second);
    bool receiveLong();
    void configure(int type);
    bool open(int type);
    bool payFirst(int amount, int discount, int merchant);
    bool paySecond(int amount, int discount, int merchant);
    bool payByControl(int amount, int discount, int merchant);
    bool payByMessages(int amount, int merchant);
    void sevenValues();
    bool fine(const QString& name, const QVariantList& ins = {}, const QVariantList& outs = {});
    bool padFine(int code);
    bool padResponse(const QString& name, const QVariantList& ins, QString& response, int amount = 0);
    bool padPaid(const QString& name, const QVariantList& ins, int amount);
    bool padReport();
    bool send(const char* action);
    int receive();
    bool act(const char* action);
    bool failWith(int response);
    QString get(const char* parameter);
    void set(const char* parameter, const QVariant& value);
    QString merchantNumber(int index);
    bool fields();
    bool tests(int type);

    TText FOnLog;
    TCode FOnError, FOnStatus;
    bool FCreated = false;
    bool FHearing = false;
};

/// Fields of a response, cut as the component cuts them.
QString modelField(const QString& text, int number, QChar separator);
QString modelErrorText(const QString& code);

} // namespace tnv5::bank::model
