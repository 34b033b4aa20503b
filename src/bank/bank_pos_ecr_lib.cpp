// Back-end 0: begins an operation and is asked for its last result until it is over.

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::byRef;

namespace {

/// This library takes a merchant's index as a text.
std::u16string merchantText(int merchant)
{
    return wide(QString::number(merchant));
}

class TEcrLib final : public TPosBackEnd
{
public:
    QString progId() const override { return QStringLiteral("ECRCommX.ECRLibSgn"); }

    void init(TPosDesk& desk) const override
    {
        desk.pos.SetLibVersion(desk.text(u"LibraryVersion"));
        if (desk.pos.TimeOut() > 0) {
            desk.call(u"SetUserTimeOut", {desk.pos.TimeOut()});
        }
    }

    bool connect(TPosDesk& desk) const override
    {
        if (desk.pos.IP().isEmpty()) {
            desk.call(u"SetCommNum", {desk.pos.ComPort()});
            desk.call(u"CommOpen");
        } else {
            desk.call(u"CommOpenTCP", {wide(desk.pos.IP()), desk.pos.IPPort()});
        }
        return desk.wait();
    }

    void disconnect(TPosDesk& desk) const override { desk.call(u"CommClose"); }

    bool purchase(TPosDesk& desk, int amount, int discount, int merchant) const override
    {
        desk.call(u"PosPurchase", {byRef(amount), byRef(discount), merchantText(merchant)});
        if (!desk.wait() || desk.number(u"GetLastResult") != kSuccess) {
            return false;
        }
        desk.pos.SetRRN(desk.text(u"getRRN"));
        desk.pos.SetTransactionID(desk.text(u"InvoiceNum"));
        return true;
    }

    bool xReport(TPosDesk& desk, int merchant) const override
    {
        desk.call(u"PosXBalanceMer", {merchantText(merchant)});
        return desk.wait();
    }

    bool zReport(TPosDesk& desk, int merchant) const override
    {
        desk.call(u"PosSettleMer", {merchantText(merchant)});
        return desk.wait();
    }

    bool test(TPosDesk& desk) const override
    {
        desk.call(u"PosEchoTest");
        return desk.tell(desk.wait(), texts::kTerminalAnswers, texts::kTerminalSilent);
    }

    bool waitResponse(TPosDesk& desk) const override
    {
        return poll(desk, u"GetLastResult", [&] { desk.status(0, texts::kPleaseWait); });
    }
};

} // namespace

const TPosBackEnd& ecrLibBackEnd()
{
    static const TEcrLib backEnd;
    return backEnd;
}

} // namespace tnv5::bank
