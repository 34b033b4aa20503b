// Back-end 2, the control: each call is a whole operation, told about by the control's events meanwhile.

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::byRef;

namespace {

constexpr int kOnSerialPort = 0;
constexpr int kOnNetwork = 1;
constexpr int kWaitMs = 180'000;

class TControl final : public TPosBackEnd
{
public:
    QString progId() const override { return kControlClass; }
    bool isControl() const override { return true; }

    void init(TPosDesk& desk) const override
    {
        desk.pos.SetLibVersion(desk.text(u"DLLVersion"));
        desk.call(u"PathToLogging", {wide(desk.pos.logfile())});
        desk.call(desk.pos.log() ? u"LoggingON" : u"LoggingOFF");
    }

    bool connect(TPosDesk& desk) const override
    {
        if (desk.pos.IP().isEmpty()) {
            desk.put(u"TransportType", kOnSerialPort);
            desk.put(u"PosPort", desk.pos.ComPort());
        } else {
            desk.put(u"TransportType", kOnNetwork);
            desk.put(u"PosIP", wide(desk.pos.IP()));
            desk.put(u"PosPort", desk.pos.IPPort());
        }
        return succeeds(desk, u"PosOpen", {}) && succeeds(desk, u"PosEchoTest", {});
    }

    void disconnect(TPosDesk& desk) const override { desk.call(u"PosClose"); }

    bool purchase(TPosDesk& desk, int amount, int discount, int merchant) const override
    {
        if (!succeeds(desk, u"PosPurchaseMer", {amount, discount, byRef(merchant)})) {
            return false;
        }
        desk.pos.SetRRN(desk.text(u"TrxRRNp"));
        desk.pos.SetTransactionID(desk.text(u"Receipt"));
        return true;
    }

    bool purchaseReturn(TPosDesk& desk, int amount, const QString& /*rrn*/, const QString& /*authId*/,
                        int merchant) const override
    {
        // a return is a payment below zero here, and must never charge, whatever sign it comes with
        return purchase(desk, amount > 0 ? -amount : amount, 0, merchant);
    }

    bool xReport(TPosDesk& desk, int merchant) const override
    {
        return succeeds(desk, u"PosXBalanceMer", {merchant});
    }

    bool zReport(TPosDesk& desk, int merchant) const override
    {
        return succeeds(desk, u"PosSettleMer", {merchant});
    }

    bool deviceInfo(TPosDesk& desk) const override
    {
        desk.pos.SetDeviceModelName(desk.text(u"PosGetInfo"));
        return true;
    }

    bool test(TPosDesk& desk) const override
    {
        return desk.tell(succeeds(desk, u"PosEchoTest", {}), texts::kTerminalAnswers, texts::kTerminalSilent);
    }

    // No operation of this back-end waits, and the methods are another library's; kept as it is.
    bool waitResponse(TPosDesk& desk) const override
    {
        TPosDesk::TArguments arguments{kWaitMs};
        const int response =
            TPosDesk::toNumber(desk.call(u"pos_receive", arguments, std::chrono::milliseconds(kWaitMs)));
        if (desk.equals(response, u"RESP_TIMEOUT")) {
            desk.error(response, texts::kTimedOut);
        } else if (desk.equals(response, u"RESP_BREAK")) {
            desk.error(response, texts::kBrokenOff);
        } else if (desk.equals(response, u"RESP_CONFIRM")) {
            desk.status(response, texts::kConfirmed);
            return true;
        } else if (desk.equals(response, u"RESP_DECLINE")) {
            desk.error(response, texts::kDeclined);
        }
        return false;
    }

private:
    /// Calls a method whose result and the code that the control tells meanwhile are both 0 on success.
    static bool succeeds(TPosDesk& desk, std::u16string_view name, TPosDesk::TArguments&& arguments)
    {
        desk.pos._OnTrxComplete(0);
        const int result = desk.number(name, std::move(arguments));
        const int code = desk.pos.GetLastError() != 0 ? desk.pos.GetLastError() : result;
        if (code != 0) {
            desk.error(code, desk.pos.LastStatusMsg());
        }
        return code == 0;
    }
};

} // namespace

const TPosBackEnd& controlBackEnd()
{
    static const TControl backEnd;
    return backEnd;
}

} // namespace tnv5::bank
