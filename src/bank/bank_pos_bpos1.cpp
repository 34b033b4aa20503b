// Back-end 1: begins an operation and is asked for its last result until it is over; a payment is confirmed
// in a second operation.

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::byRef;

namespace {

class TBpos1 final : public TPosBackEnd
{
public:
    QString progId() const override { return QStringLiteral("ECRCommX.BPOS1Lib"); }

    void init(TPosDesk& desk) const override
    {
        desk.pos.SetLibVersion(desk.text(u"LibraryVersion"));
        if (desk.pos.log()) {
            desk.call(u"useLogging", {1, wide(desk.pos.logfile())});
        } else {
            desk.call(u"useLogging", {0, u""});
        }
        desk.call(u"SetErrorLang", {desk.pos.Language()});
    }

    bool connect(TPosDesk& desk) const override
    {
        if (desk.pos.IP().isEmpty()) {
            desk.call(u"CommOpen", {desk.pos.ComPort(), desk.pos.ComPortRate()});
        } else {
            desk.call(u"CommOpenTCP", {wide(desk.pos.IP()), desk.pos.IPPort()});
        }
        return desk.wait();
    }

    void disconnect(TPosDesk& desk) const override { desk.call(u"CommClose"); }

    bool purchase(TPosDesk& desk, int amount, int discount, int merchant) const override
    {
        desk.call(u"Purchase", {byRef(amount), byRef(discount), byRef(merchant)});
        return succeeded(desk) && confirm(desk);
    }

    bool cashAdvance(TPosDesk& desk, int amount, int merchant) const override
    {
        const QString request = texts::kCashBack + QString::number(amount) + texts::kCashBackMerchant +
                                QString::number(merchant) + texts::kCashBackEnd;
        desk.call(u"StartScenario", {wide(request)});
        return succeeded(desk);
    }

    bool purchaseReturn(TPosDesk& desk, int amount, const QString& rrn, const QString& /*authId*/,
                        int merchant) const override
    {
        desk.call(u"PurchaseReturn", {amount, merchant, wide(rrn)});
        if (!desk.wait()) {
            return false;
        }
        desk.pos.SetRRN(rrn);
        desk.pos.SetAuthID(desk.text(u"AuthCode"));
        return true;
    }

    bool xReport(TPosDesk& desk, int merchant) const override
    {
        desk.call(u"GetBatchTotals", {merchant});
        if (!desk.wait()) {
            return false;
        }
        readTotals(desk);
        desk.call(u"PrintBatchTotals", {merchant});
        return printed(desk);
    }

    bool zReport(TPosDesk& desk, int merchant) const override
    {
        desk.call(u"Settlement", {merchant});
        return printed(desk);
    }

    bool deviceInfo(TPosDesk& desk) const override
    {
        desk.pos.SetDeviceModelName(desk.text(u"TerminalInfo"));
        return true;
    }

    bool test(TPosDesk& desk) const override
    {
        desk.call(u"Ping");
        return desk.tell(desk.wait(), texts::kTerminalAnswers, texts::kTerminalSilent);
    }

    bool waitResponse(TPosDesk& desk) const override
    {
        return poll(desk, kLastResult, [&] {
            const int code = desk.number(u"LastStatMsgCode");
            desk.status(code, desk.text(u"LastStatMsgDescription"));
        });
    }

private:
    static constexpr std::u16string_view kLastResult = u"LastResult";

    /// Waits; reads the values of a success.
    static bool succeeded(TPosDesk& desk)
    {
        if (!desk.wait() || desk.number(kLastResult) != kSuccess) {
            return false;
        }
        readValues(desk);
        return true;
    }

    /// The second half of a payment. Its values are read whatever becomes of it: they help to find out.
    static bool confirm(TPosDesk& desk)
    {
        desk.call(u"Confirm");
        const bool confirmed = desk.wait();
        readValues(desk);
        if (!confirmed || desk.number(kLastResult) != kSuccess) {
            return false;
        }
        desk.call(u"ReqCurrReceipt");
        return true;
    }

    static bool printed(TPosDesk& desk)
    {
        if (!desk.wait()) {
            return false;
        }
        desk.call(u"ReqCurrReceipt");
        return true;
    }

    static void readValues(TPosDesk& desk)
    {
        desk.pos.SetRRN(desk.text(u"RRN"));
        desk.pos.SetTransactionID(desk.text(u"InvoiceNum"));
        desk.pos.SetAuthID(desk.text(u"AuthCode"));
        desk.pos.SetPAN(desk.text(u"PAN"));
        desk.pos.SetIssuerName(desk.text(u"IssuerName"));
        desk.pos.SetMerchantID(desk.text(u"MerchantID"));
        desk.pos.SetTerminalID(desk.text(u"TerminalID"));
    }

    static void readTotals(TPosDesk& desk)
    {
        desk.pos.SetTotalsDebitAmt(desk.text(u"TotalsDebitAmt"));
        desk.pos.SetTotalsDebitNum(desk.text(u"TotalsDebitNum"));
        desk.pos.SetTotalsCreditAmt(desk.text(u"TotalsCreditAmt"));
        desk.pos.SetTotalsCreditNum(desk.text(u"TotalsCreditNum"));
        desk.pos.SetTotalsCancelledAmt(desk.text(u"TotalsCancelledAmt"));
        desk.pos.SetTotalsCancelledNum(desk.text(u"TotalsCancelledNum"));
    }
};

} // namespace

const TPosBackEnd& bpos1BackEnd()
{
    static const TBpos1 backEnd;
    return backEnd;
}

} // namespace tnv5::bank
