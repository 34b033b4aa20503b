#include "tnv5/bank/bank_pos.h"
#include "tnv5/script/binding.h"
#include "tnv5/script/units.h"

namespace tnv5::script {

using bank::TBankPOS;

namespace {

// Two parameters only, and so no merchant: intended.
bool CashAdvance(TBankPOS& pos, int Amount, int Discount)
{
    return pos.CashAdvance(Amount, Discount, 0);
}

/// The terminal's automation object; nothing while there is none.
TScriptProperty automationObject()
{
    return {"IEcrInst",
            TScriptType::Object,
            false,
            [](QObject* self, QVariantList& args) {
                checkCount(args, 0);
                const auto object = selfAs<TBankPOS>(self).Instance();
                return object ? QVariant::fromValue(object) : QVariant();
            },
            {}};
}

/// The two texts are wide ones.
TScriptMethod purchaseReturn()
{
    TScriptMethod method = scriptMethod<TBankPOS, &TBankPOS::PurchaseReturn>("PurchaseReturn");
    for (TScriptParam& param : method.Params) {
        if (param.Type == TScriptType::String) {
            param.Type = TScriptType::WideString;
        }
    }
    return method;
}

} // namespace

TScriptUnit bankUnit()
{
    const TScriptClass self = scriptClass<TBankPOS>();
    return {"bank",
            {std::vector<TScriptEvent>{
                 scriptEvent<platform::TLogEvent>("TLogEvent"),
                 scriptEvent<bank::TStatusEvent>("TStatusEvent"),
             },
             TScriptClasses{self}, TScriptProperties{self, {automationObject()}},
             TScriptMethods{self,
                            {
                                scriptMethod<TBankPOS, &TBankPOS::Init>("Init"),
                                scriptMethod<TBankPOS, &TBankPOS::IsInit>("IsInit"),
                                scriptMethod<TBankPOS, &TBankPOS::Connect>("Connect"),
                                scriptMethod<TBankPOS, &TBankPOS::Disconnect>("Disconnect"),
                                scriptMethod<TBankPOS, &TBankPOS::DeviceInfo>("DeviceInfo"),
                                scriptMethod<TBankPOS, &TBankPOS::Test>("Test"),
                                scriptMethod<TBankPOS, &TBankPOS::Purchase>("Purchase"),
                                scriptMethod("CashAdvance", &CashAdvance),
                                purchaseReturn(),
                                scriptMethod<TBankPOS, &TBankPOS::XReport>("XReport"),
                                scriptMethod<TBankPOS, &TBankPOS::ZReport>("ZReport"),
                            }}}};
}

} // namespace tnv5::script
