// Back-end 3: each call is a whole operation and gives its response as one text of fields.

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::byRef;

namespace {

// fields of a response
constexpr int kResult = 2;
constexpr int kRrn = 3;
constexpr int kSale = 3;
constexpr int kReturn = 4;
constexpr int kTransaction = 6;
constexpr int kAuthorisation = 8;

const QString kDone = QStringLiteral("0");

/// Numbers and sums of one side of a report.
struct TTurnover
{
    explicit TTurnover(const QString& field)
        : debitNum(TBankPOS::parseblueex(field, 1)),
          debitAmt(TBankPOS::parseblueex(field, 2)),
          creditNum(TBankPOS::parseblueex(field, 3)),
          creditAmt(TBankPOS::parseblueex(field, 4))
    {
    }

    QString summary(const QString& title) const
    {
        const auto line = [](const QString& name, const QString& number, const QString& amount) {
            return name + texts::kTransactions + number + u' ' + texts::kSum + amount + texts::kLineEnd;
        };
        return title + texts::kLineEnd + line(texts::kDebit, debitNum, debitAmt) +
               line(texts::kCredit, creditNum, creditAmt);
    }

    QString debitNum;
    QString debitAmt;
    QString creditNum;
    QString creditAmt;
};

class TBluePad final : public TPosBackEnd
{
public:
    QString progId() const override { return QStringLiteral("BluePad50v2.Borica"); }

    void init(TPosDesk& desk) const override
    {
        desk.put(u"SaveLog", desk.pos.log());
        desk.put(u"LogFileName", wide(desk.pos.logfile()));
    }

    bool connect(TPosDesk& desk) const override
    {
        const QString port = QStringLiteral("COM%1").arg(desk.pos.ComPort());
        return succeeds(desk, u"OpenPort", {wide(port)}) && succeeds(desk, u"Ping", {});
    }

    void disconnect(TPosDesk& desk) const override { desk.call(u"ClosePort"); }

    bool purchase(TPosDesk& desk, int amount, int /*discount*/, int /*merchant*/) const override
    {
        return paid(desk, u"Purchase", {byRef(amount)});
    }

    bool purchaseReturn(TPosDesk& desk, int amount, const QString& rrn, const QString& authId,
                        int /*merchant*/) const override
    {
        return paid(desk, u"VoidOfPurchase", {amount, wide(rrn), wide(authId)});
    }

    bool xReport(TPosDesk& desk, int /*merchant*/) const override
    {
        const QString response = respond(desk, u"GetXReport", {});
        if (!good(desk, response)) {
            return false;
        }
        const TTurnover sale(TBankPOS::parseblue(response, kSale));
        const TTurnover back(TBankPOS::parseblue(response, kReturn));
        desk.pos.SetTotalsDebitNum(sale.debitNum);
        desk.pos.SetTotalsDebitAmt(sale.debitAmt);
        desk.pos.SetTotalsCreditNum(sale.creditNum);
        desk.pos.SetTotalsCreditAmt(sale.creditAmt);
        desk.pos.SetTotalsCancelledNum(back.debitNum);
        desk.pos.SetTotalsCancelledAmt(back.debitAmt);
        desk.log(sale.summary(texts::kSale) + back.summary(texts::kReturn));
        return true;
    }

    bool zReport(TPosDesk& desk, int /*merchant*/) const override
    {
        return good(desk, respond(desk, u"EndOfDay", {}));
    }

    bool deviceInfo(TPosDesk& desk) const override
    {
        TPosDesk::TArguments arguments{byRef(u"")};
        if (!judged(desk, TPosDesk::toNumber(desk.call(u"GetPinpadInfo", arguments)))) {
            return false;
        }
        desk.pos.SetDeviceModelName(TPosDesk::toText(arguments[0].value));
        return true;
    }

    bool test(TPosDesk& desk) const override
    {
        return desk.tell(succeeds(desk, u"Ping", {}), texts::kTerminalAnswers, texts::kTerminalSilent) &&
               desk.tell(good(desk, respond(desk, u"TestConnection", {})), texts::kBankAnswers,
                         texts::kBankSilent);
    }

private:
    /// Reports a code that is not 0.
    static bool judged(TPosDesk& desk, int code)
    {
        if (code != 0) {
            desk.error(code, TBankPOS::errorblue(QString::number(code)));
        }
        return code == 0;
    }

    static bool succeeds(TPosDesk& desk, std::u16string_view name, TPosDesk::TArguments&& arguments)
    {
        return judged(desk, desk.number(name, std::move(arguments)));
    }

    /// Calls a method whose last argument is its response, and logs that.
    static QString respond(TPosDesk& desk, std::u16string_view name, TPosDesk::TArguments&& arguments)
    {
        arguments.push_back(byRef(u""));
        desk.call(name, arguments);
        const QString response = TPosDesk::toText(arguments.back().value);
        desk.log(response);
        return response;
    }

    /// Whether a response tells success; reports its code when not.
    static bool good(TPosDesk& desk, const QString& response)
    {
        const QString result = TBankPOS::parseblue(response, kResult);
        if (result == kDone) {
            return true;
        }
        desk.error(codeOf(result), TBankPOS::errorblue(result));
        return false;
    }

    static bool paid(TPosDesk& desk, std::u16string_view name, TPosDesk::TArguments&& arguments)
    {
        const QString response = respond(desk, name, std::move(arguments));
        if (!good(desk, response)) {
            return false;
        }
        desk.pos.SetRRN(TBankPOS::parseblue(response, kRrn));
        desk.pos.SetTransactionID(TBankPOS::parseblue(response, kTransaction));
        desk.pos.SetAuthID(TBankPOS::parseblue(response, kAuthorisation));
        desk.log(desk.pos.TransactionID() + u' ' + desk.pos.RRN());
        return true;
    }
};

} // namespace

const TPosBackEnd& bluePadBackEnd()
{
    static const TBluePad backEnd;
    return backEnd;
}

} // namespace tnv5::bank
