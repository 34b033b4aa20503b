// Back-end 4: parameters are set, an action is sent, and responses are received until it is over. What the
// parameters, actions and responses are numbered is the library's business.

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::byRef;

namespace {

constexpr int kReceiveMs = 30'000;
constexpr int kShortReceiveMs = 1'000;
constexpr int kCurrency = 980;
constexpr int kMostFields = 10'000; // of one response; a library that has more goes on for ever

const QString kSettled = QStringLiteral("0");

class TCardPay final : public TPosBackEnd
{
public:
    QString progId() const override { return QStringLiteral("CardPay.PosApi"); }

    void init(TPosDesk& desk) const override { desk.pos.SetLibVersion(get(desk, u"POS_SOFT_VER")); }

    bool connect(TPosDesk& desk) const override
    {
        const QString address = desk.pos.IP().isEmpty()
                                    ? QStringLiteral("COM%1").arg(desk.pos.ComPort())
                                    : desk.pos.IP() + u':' + QString::number(desk.pos.IPPort());
        return desk.truth(u"pos_open", {wide(address)});
    }

    void disconnect(TPosDesk& desk) const override { desk.call(u"pos_close"); }

    bool purchase(TPosDesk& desk, int amount, int /*discount*/, int merchant) const override
    {
        QString merchantNumber;
        if (merchant > 0) {
            merchantNumber = merchantId(desk, merchant);
            receive(desk, kShortReceiveMs); // what it gives does not count
        }
        set(desk, u"POS_AMOUNT", amount);
        set(desk, u"POS_CURRENCY", kCurrency);
        if (merchant > 0) {
            set(desk, u"POS_MERCHANT_ID", wide(merchantNumber));
        }
        return done(desk, u"ACTION_PAYMENT") && settled(desk) && printResponse(desk);
    }

    bool xReport(TPosDesk& desk, int /*merchant*/) const override
    {
        if (!done(desk, u"ACTION_XREPORT_SUMMARY")) {
            return false;
        }
        desk.pos.SetTotalsDebitAmt(get(desk, u"POS_DEBIT_AMOUNT"));
        desk.pos.SetTotalsDebitNum(get(desk, u"POS_DEBIT_NUMBER"));
        desk.pos.SetTotalsCreditAmt(get(desk, u"POS_CREDIT_AMOUNT"));
        desk.pos.SetTotalsCreditNum(get(desk, u"POS_CREDIT_NUMBER"));
        desk.pos.SetTotalsCancelledNum(get(desk, u"POS_CANCELLED_NUMBER"));
        desk.pos.SetTotalsCancelledAmt(get(desk, u"POS_CANCELLED_AMOUNT"));
        return true;
    }

    bool zReport(TPosDesk& desk, int /*merchant*/) const override
    {
        set(desk, u"POS_REPORT", 1);
        return done(desk, u"ACTION_CLOSE_DAY");
    }

    bool deviceInfo(TPosDesk& desk) const override
    {
        if (!done(desk, u"ACTION_POS_INFO")) {
            return false;
        }
        desk.pos.SetDeviceSerialNumber(get(desk, u"POS_SERIAL_NUMBER"));
        desk.pos.SetDeviceTerminalID(get(desk, u"POS_LICENSE"));
        desk.pos.SetDeviceSoftVer(get(desk, u"POS_SOFT_VER"));
        return true;
    }

    bool test(TPosDesk& desk) const override
    {
        if (!sent(desk, u"ACTION_HOST_ECHO_TEST")) {
            desk.log(texts::kTerminalSilent);
            return false;
        }
        return desk.tell(echoed(desk), texts::kBankAnswers, texts::kBankSilent);
    }

    QString merchantId(TPosDesk& desk, int index) const override
    {
        set(desk, u"POS_HOST_RECORD", index);
        if (!sent(desk, u"ACTION_HOST_INFO")) {
            return texts::kNone;
        }
        receive(desk, kShortReceiveMs); // what it gives does not count
        const QString number = get(desk, u"POS_MERCHANT_ID");
        return number.isEmpty() ? texts::kNone : number;
    }

    bool waitResponse(TPosDesk&) const override { return true; }

    bool printResponse(TPosDesk& desk) const override
    {
        std::u16string_view method = u"pos_get_first";
        for (int field = 0; field < kMostFields; ++field) {
            TPosDesk::TArguments arguments{byRef(u""), byRef(u"")};
            if (!TPosDesk::toTruth(desk.call(method, arguments))) {
                break;
            }
            takeField(desk, TPosDesk::toText(arguments[0].value), TPosDesk::toText(arguments[1].value));
            method = u"pos_get_next";
        }
        return true;
    }

private:
    static QString get(TPosDesk& desk, std::u16string_view parameter)
    {
        return desk.text(u"pos_get", {desk.constant(parameter)});
    }

    static void set(TPosDesk& desk, std::u16string_view parameter, const TPosDesk::TValue& value)
    {
        desk.call(u"pos_set", {desk.constant(parameter), value});
    }

    static platform::automation::TValue receive(TPosDesk& desk, int ms)
    {
        TPosDesk::TArguments arguments{ms};
        return desk.call(u"pos_receive", arguments, std::chrono::milliseconds(ms));
    }

    /// Sends an action; reports when that cannot be done.
    static bool sent(TPosDesk& desk, std::u16string_view action)
    {
        if (desk.truth(u"pos_send", {desk.constant(action)})) {
            return true;
        }
        desk.error(-1, texts::kNotSent);
        return false;
    }

    static bool done(TPosDesk& desk, std::u16string_view action)
    {
        return sent(desk, action) && confirmed(desk);
    }

    /// Receives until there is a response that ends the action, and gives that.
    static int received(TPosDesk& desk)
    {
        for (;;) {
            const int response = TPosDesk::toNumber(receive(desk, kReceiveMs));
            desk.log(texts::kResponse + QString::number(response));
            if (desk.equals(response, u"RESP_MESSAGE")) {
                desk.status(response, get(desk, u"RESP_MESSAGE"));
            } else if (!desk.equals(response, u"RESP_IDENTIFIER")) {
                return response;
            }
            desk.letMessagesRun();
        }
    }

    static void unsuccessful(TPosDesk& desk, int code)
    {
        desk.error(code, texts::kNotSuccessful + get(desk, u"RESP_MESSAGE"));
    }

    static bool confirmed(TPosDesk& desk)
    {
        const int response = received(desk);
        if (desk.equals(response, u"RESP_CONFIRM")) {
            return true;
        }
        if (desk.equals(response, u"RESP_TIMEOUT")) {
            desk.error(response, texts::kTimedOut);
        } else {
            unsuccessful(desk, response);
        }
        return false;
    }

    /// The same for the test of the bank, where more responses have a text of their own.
    static bool echoed(TPosDesk& desk)
    {
        const int response = received(desk);
        if (desk.equals(response, u"RESP_CONFIRM")) {
            return true;
        }
        if (desk.equals(response, u"RESP_DECLINE")) {
            desk.error(response, texts::kDeclined);
        } else if (desk.equals(response, u"RESP_BREAK")) {
            desk.error(response, texts::kBrokenOff);
        } else if (desk.equals(response, u"RESP_TIMEOUT")) {
            desk.error(response, texts::kTimedOut);
        } else {
            unsuccessful(desk, response);
        }
        return false;
    }

    /// Whether the payment itself was a success.
    static bool settled(TPosDesk& desk)
    {
        const QString status = get(desk, u"POS_TRANS_STATUS");
        if (status == kSettled) {
            return true;
        }
        unsuccessful(desk, codeOf(status));
        return false;
    }

    static void takeField(TPosDesk& desk, const QString& name, const QString& value)
    {
        desk.log(texts::kParameter + name + texts::kParameterValue + value);
        if (name == QLatin1String("rrn")) {
            desk.pos.SetRRN(value);
        } else if (name == QLatin1String("approval")) {
            desk.pos.SetAuthID(value);
        } else if (name == QLatin1String("trans_rcpt")) {
            desk.pos.SetTransactionID(value);
        }
    }
};

} // namespace

const TPosBackEnd& cardPayBackEnd()
{
    static const TCardPay backEnd;
    return backEnd;
}

} // namespace tnv5::bank
