#include "tnv5/bank/bank_pos.h"

#include "tnv5/bank/bank_pos_back_end.h"
#include "tnv5/bank/bank_pos_fields.h"
#include "tnv5/bank/bank_pos_texts.h"

namespace tnv5::bank {

using platform::automation::TArguments;
using platform::automation::TObjectPtr;

TBankPOS::TBankPOS(QObject* AOwner) : TComponent(AOwner) {}

TBankPOS::~TBankPOS()
{
    platform::guarded([this] { TPosDesk(*this).log(texts::kEnd); });
    if (EcrInstAx98) {
        platform::guarded([this] { EcrInstAx98->setEventHandler({}); });
    }
}

/// An operation: logs its text, runs with the back-end of `PosType`, and reports a failing call of the
/// library. Without a back-end it fails and does nothing.
template <class Result, class Body>
Result TBankPOS::perform(const QString& startText, Body&& body, const Result& ifFailed)
{
    TPosDesk desk(*this);
    if (!startText.isEmpty()) {
        desk.log(startText);
    }
    const TPosBackEnd* const backEnd = backEndOf(FPosType);
    if (backEnd == nullptr) {
        return ifFailed;
    }
    QString message;
    try {
        return body(*backEnd, desk);
    } catch (const TLibraryFailure& failure) {
        message = failure.message;
    }
    desk.error(-1, texts::kCallFailed + message);
    return ifFailed;
}

bool TBankPOS::Init()
{
    return Operation(
        [this] {
            return perform(
                texts::kInit,
                [this](const TPosBackEnd& backEnd, TPosDesk& desk) {
                    if (!EcrInst && !createInstance()) {
                        return false;
                    }
                    backEnd.init(desk);
                    return true;
                },
                false);
        },
        false);
}

/// Creates the object of the back-end; reports when that fails. Nothing in the form designer.
bool TBankPOS::createInstance()
{
    const TPosBackEnd* const backEnd = backEndOf(FPosType);
    if (backEnd == nullptr || Designing()) {
        return false;
    }
    TObjectPtr created;
    QString message;
    const auto failed = [&](const QString& text) {
        message = text;
        created = nullptr;
    };
    Attempt([&] { created = platform::automation::CreateOleObject(wide(backEnd->progId())); }, failed);
    if (EcrInst) {
        return true; // made by an operation inside the making
    }
    if (created && backEnd->isControl()) {
        Attempt(
            [&] {
                created->setEventHandler([this](std::u16string_view event, const TArguments& arguments) {
                    platform::guarded([&] { hear(event, arguments); });
                });
            },
            failed);
    }
    if (!created) {
        TPosDesk(*this).error(-1, texts::kCreationFailed + message);
        return false;
    }
    EcrInst = created;
    if (backEnd->isControl()) {
        EcrInstAx98 = created;
    }
    return true;
}

void TBankPOS::hear(std::u16string_view event, const TArguments& arguments)
{
    if (arguments.empty()) {
        return;
    }
    if (event == u"OnMsgReceived") {
        _OnMsgReceived(QString::fromStdU16String(arguments[0].value.toText()));
    } else if (event == u"OnTrxComplete") {
        _OnTrxComplete(arguments[0].value.toInt());
    }
}

bool TBankPOS::Connect()
{
    return Operation(
        [this] {
            const bool done = perform(
                texts::kConnect,
                [](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.connect(desk); }, false);
            return TPosDesk(*this).tell(done, texts::kConnected, texts::kNotConnected);
        },
        false);
}

bool TBankPOS::Disconnect()
{
    return Operation(
        [this] {
            return perform(
                texts::kDisconnect,
                [](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.disconnect(desk), true; },
                false);
        },
        false);
}

bool TBankPOS::DeviceInfo()
{
    return Operation(
        [this] {
            return perform(
                texts::kDeviceInfo,
                [](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.deviceInfo(desk); }, false);
        },
        false);
}

bool TBankPOS::Test()
{
    return Operation(
        [this] {
            return perform(
                texts::kTest, [](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.test(desk); },
                false);
        },
        false);
}

bool TBankPOS::Purchase(int Amount, int Discount, int IDMarchant)
{
    return Operation(
        [&] {
            return perform(
                texts::kPurchase,
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) {
                    return backEnd.purchase(desk, Amount, Discount, IDMarchant);
                },
                false);
        },
        false);
}

bool TBankPOS::CashAdvance(int Amount, int /*Discount*/, int IDMarchant)
{
    return Operation(
        [&] {
            return perform(
                texts::kCashAdvance,
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) {
                    return backEnd.cashAdvance(desk, Amount, IDMarchant);
                },
                false);
        },
        false);
}

bool TBankPOS::PurchaseReturn(int Amount, const QString& RRN, const QString& AuthID, int IDMarchant)
{
    const QString rrn = RRN; // the caller's texts may change while the operation waits
    const QString authId = AuthID;
    return Operation(
        [&] {
            return perform(
                {}, // tells nothing at the beginning; intended
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) {
                    return backEnd.purchaseReturn(desk, Amount, rrn, authId, IDMarchant);
                },
                false);
        },
        false);
}

bool TBankPOS::XReport(int IDMarchant)
{
    return Operation(
        [&] {
            return perform(
                texts::kXReport,
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.xReport(desk, IDMarchant); },
                false);
        },
        false);
}

bool TBankPOS::ZReport(int IDMarchant)
{
    return Operation(
        [&] {
            return perform(
                texts::kZReport,
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.zReport(desk, IDMarchant); },
                false);
        },
        false);
}

QString TBankPOS::GetMerchantID(int AIdx)
{
    return Operation(
        [&] {
            return perform(
                {},
                [&](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.merchantId(desk, AIdx); },
                texts::kNone);
        },
        texts::kNone);
}

bool TBankPOS::_WaitResponse() // NOLINT(bugprone-reserved-identifier)
{
    return Operation(
        [this] {
            // without a back-end it is logged all the same
            return backEndOf(FPosType) == nullptr
                       ? TPosDesk(*this).wait()
                       : perform(
                             {}, [](const TPosBackEnd&, TPosDesk& desk) { return desk.wait(); }, false);
        },
        false);
}

bool TBankPOS::VarifonePrintResponse()
{
    return Operation(
        [this] {
            return perform(
                {}, [](const TPosBackEnd& backEnd, TPosDesk& desk) { return backEnd.printResponse(desk); },
                false);
        },
        false);
}

void TBankPOS::ShowError(int ACode, const QString& AStr)
{
    const QString text = AStr;
    Operation([&] { TPosDesk(*this).error(ACode, text); });
}

void TBankPOS::_OnMsgReceived(const QString& AStr) // NOLINT(bugprone-reserved-identifier)
{
    const QString text = AStr;
    Operation([&] { TPosDesk(*this).status(0, text); });
}

void TBankPOS::_OnTrxComplete(int ACode) // NOLINT(bugprone-reserved-identifier)
{
    AXErrorCode = ACode;
}

QString TBankPOS::parseblue(const QString& Text, int N)
{
    return responseField(Text, N, u';');
}

QString TBankPOS::parseblueex(const QString& Text, int N)
{
    return responseField(Text, N, u' ');
}

QString TBankPOS::errorblue(const QString& ACode)
{
    return texts::errorText(ACode);
}

} // namespace tnv5::bank
