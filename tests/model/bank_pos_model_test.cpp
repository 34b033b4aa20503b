#include "model/bank_pos_model.h"
#include "model/bank_pos_words.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/testing/memory_library.h"

#include <gtest/gtest.h>
#include <limits>

// Random scenarios on an automation bank terminal's component and on a model of it, with one random library
// behind both: they must tell the same, step by step.

namespace tnv5::bank::model {

namespace {

using platform::automation::EOleError;
using platform::automation::TArgument;
using platform::automation::TArguments;
using platform::automation::TRegisteredClass;
using platform::automation::TValue;

TNV5_STEPS(Create, Destroy, Handler, SetType, Set, Initialise, Link, Unlink, Info, Check, Pay, PayOut,
           PayBack, Interim, Closing, Merchant, WaitLong, Print, Report, Told, Cut)

enum EEvent { evLog, evError, evStatus, kEvents };

constexpr const char16_t* kProgIds[] = {u"ECRCommX.ECRLibSgn", u"ECRCommX.BPOS1Lib", u"TAxECRClass98",
                                        u"BluePad50v2.Borica", u"CardPay.PosApi"};

QVariant plain(const TValue& value)
{
    return value.visit([](const auto& held) -> QVariant {
        using Type = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Type, std::u16string>) {
            return QString::fromStdU16String(held);
        } else if constexpr (std::is_same_v<Type, std::int64_t>) {
            return qlonglong(held);
        } else if constexpr (std::is_arithmetic_v<Type>) {
            return held;
        } else {
            return {};
        }
    });
}

TValue valueOf(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::LongLong:
        return std::int64_t(value.toLongLong());
    case QMetaType::QString:
        return value.toString().toStdU16String();
    default:
        return {};
    }
}

QString typed(const QVariant& value)
{
    return QString::fromLatin1(value.typeName()) + u' ' + shown(value.toString());
}

template <class World>
class TPosStage final : public TStage
{
    using TPos = std::conditional_t<World::isModel, TModelPos, TBankPOS>;

public:
    explicit TPosStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(0, 0))
    {
        FDesigning = FTemper.chance(2);
        FType = FTemper.below(5);
        FRestless = FTemper.chance(15);
        FFaults = FTemper.pick({0, 0, 3, 20, 100});
        FWild = {FTemper.pick({0, 0, 2, 10, 50}), FTemper.pick({0, 0, 0, 2, 20})};
        const bool alike = FTemper.chance(20); // constants that have the same number
        for (int i = 0; i < constantNames().size(); ++i) {
            FConstants[constantNames()[i]] = alike ? FTemper.below(9) : i + 1;
        }
        if (FTemper.chance(10)) {
            FConstants.erase(constantNames()[FTemper.below(int(constantNames().size()))]);
        }
        prepareLibrary();
    }

    std::vector<TStep> begin(TDice& d) override
    {
        std::vector<TStep> steps{{Create}};
        const std::vector<TStep> more{{Handler, {}, evLog, 1},
                                      {Handler, {}, evError, 1},
                                      {Handler, {}, evStatus, 1},
                                      {SetType, {}, FType},
                                      {Initialise}};
        for (const TStep& step : more) { // now and then one is missing
            if (!d.chance(4)) {
                steps.push_back(step);
            }
        }
        return steps;
    }

    TStep any(TDice& d, bool inside) override
    {
        if (!FPos && !inside) {
            return {Create};
        }
        if (FPos && !FPos->IsInit() && d.chance(20)) {
            return {Initialise};
        }
        const int amount =
            d.pick({1250, 5, 0, -5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
        const int merchant = d.pick({0, 1, 3, -1});
        switch (d.weighted({200, 60, 80, 80, 80, 40, 60, 60, 60, 30, 40, 40, 60, 40, 30, 20, 20, 5})) {
        case 0:
            return {Pay, {}, amount, d.below(100), merchant};
        case 1:
            return {PayOut, {}, amount, d.below(100), merchant};
        case 2:
            return {PayBack, {d.text({"R1", ""}), d.text({"A1", "Б"})}, amount, 0, merchant};
        case 3:
            return {Interim, {}, merchant};
        case 4:
            return {Closing, {}, merchant};
        case 5:
            return {Link};
        case 6:
            return {Unlink};
        case 7:
            return {Info};
        case 8:
            return {Check};
        case 9:
            return {Merchant, {}, merchant};
        case 10:
            return {WaitLong};
        case 11:
            return {Print};
        case 12:
            return sampleSetting(d, Set);
        case 13:
            return {
                Told, {d.text({"OnMsgReceived", "OnMsgReceived", "OnTrxComplete", "OnElse"})}, d.below(4)};
        case 14:
            return {Handler, {}, d.below(kEvents), d.chance(75) ? d.between(1, 3) : 0};
        case 15:
            return {Report, {d.text({"five", ""})}, d.pick({5, -1, 0})};
        case 16:
            return d.chance(FRestless ? 60 : 8) ? TStep{SetType, {}, d.between(-1, 5)}
                   : d.chance(50)               ? TStep{Initialise}
                                                : TStep{SetType, {}, FType};
        default:
            return d.chance(50) ? TStep{Destroy} : TStep{Cut, {cuttable(d)}, d.between(-1, 9)};
        }
    }

protected:
    void perform(const TStep& step) override
    {
        if (step.kind == Create && !FPos && depth() == 0) {
            FPos = ground.world.template make<TPos>(FDesigning);
            if constexpr (World::isModel) {
                FPos->Library = &FModelLibrary;
            }
        } else if (step.kind == Destroy && FPos) {
            World::destroy(FPos);
        } else if (step.kind == Cut) {
            cut(step.text[0], int(step.a));
        } else if (step.kind == Told) {
            tell(step.text[0], int(step.a));
        } else if (FPos) {
            call(step);
        }
    }

    void look() override
    {
        if (!FPos) {
            return;
        }
        QStringList all;
        for (const char* const name : kTextProperties) {
            all << FPos->property(name).toString();
        }
        for (const char* const name : {"PosType", "LastError", "LastStatus", "log", "ComPort", "TimeOut"}) {
            all << QString::number(FPos->property(name).toInt());
        }
        note("shows " + all.join(u'|') + (FPos->IsInit() ? " created" : " no object"));
    }

    void waits() override { heard("wait"); }

private:
    // ---- the library, the same for both sides

    void prepareLibrary()
    {
        if constexpr (World::isModel) {
            FModelLibrary.call = [this](const QString& name, const QVariantList& ins, QVariantList& outs) {
                return called(name, ins, outs);
            };
            FModelLibrary.put = [this](const QString& name, const QVariant& value) { written(name, value); };
            FModelLibrary.constant = [this](const QString& name) { return constant(name); };
            FModelLibrary.create = [this](int type) { created(type); };
        } else {
            for (int type = 0; type < 5; ++type) {
                FClasses.push_back(std::make_unique<TRegisteredClass>(kProgIds[type], [this, type] {
                    created(type);
                    return FLibrary;
                }));
            }
            for (const auto& [name, value] : FConstants) {
                FLibrary->Constants[name.toStdU16String()] = value;
            }
            FLibrary->OnPut = [this](const std::u16string& name, const TValue& value) {
                written(QString::fromStdU16String(name), plain(value));
            };
            FLibrary->OnCall = [this](const std::u16string& name, TArguments& arguments) {
                QVariantList ins;
                QVariantList outs;
                for (const TArgument& argument : arguments) {
                    (argument.byReference ? outs : ins) << plain(argument.value);
                }
                const QVariant result = called(QString::fromStdU16String(name), ins, outs);
                qsizetype next = 0;
                for (TArgument& argument : arguments) {
                    if (argument.byReference) {
                        argument.value = valueOf(outs[next++]);
                    }
                }
                return valueOf(result);
            };
        }
    }

    QVariant called(const QString& name, const QVariantList& ins, QVariantList& outs)
    {
        QStringList texts;
        for (const QVariant& in : ins) {
            texts << typed(in);
        }
        for (QVariant& out : outs) {
            texts << u'&' + typed(out);
            out = sampleOut(FDice, name);
        }
        const QVariant result = sampleResult(FDice, name);
        if (name.startsWith("Pos") && FDice.chance(40)) { // the control tells what it does
            tell("OnMsgReceived", FDice.below(4));
            if (FDice.chance(30)) {
                tell("OnTrxComplete", FDice.below(4));
            }
        }
        heard("call " + name + u'(' + texts.join(", ") + u')');
        fail();
        return result;
    }

    void written(const QString& name, const QVariant& value)
    {
        heard("put " + name + ' ' + typed(value));
        fail();
    }

    void created(int type)
    {
        heard(QStringLiteral("create %1").arg(type));
        fail();
    }

    void fail()
    {
        if (FDice.permille(FFaults)) {
            note("the library raises");
            World::raise(FDice.pick({ERaise::Exception, ERaise::Standard, ERaise::Unknown, ERaise::Abort}),
                         FDice.text({"бібліотека", "gone", ""}));
        }
    }

    int constant(const QString& name) const
    {
        const auto found = FConstants.find(name);
        if (found == FConstants.end()) {
            World::raise(ERaise::Exception, "Unknown name: " + name);
        }
        return found->second;
    }

    /// An event of the control's.
    void tell(const QString& name, int number)
    {
        const QVariant value =
            name == "OnMsgReceived" ? QVariant(QStringLiteral("message %1").arg(number)) : QVariant(number);
        if constexpr (World::isModel) {
            if (const auto listener = FModelLibrary.listener) {
                ground.world.guarded([&] { listener(name, value); });
            }
        } else {
            FLibrary->raiseEvent(name.toStdU16String(), {valueOf(value)});
        }
    }

    // ---- one telling for both sides

    void call(const TStep& step)
    {
        TPos& pos = *FPos;
        const int a = int(step.a);
        const int c = int(step.c);
        const auto said1 = [&] { return said(0, step.text[0]); };
        switch (step.kind) {
        case Handler:
            return assign(a, int(step.b));
        case SetType:
            pos.setProperty("PosType", a);
            return;
        case Set:
            set(step);
            return;
        case Report:
            return pos.ShowError(a, said1());
        case Merchant:
            return note("merchant " + pos.GetMerchantID(a));
        default:
            break;
        }
        const bool result = step.kind == Initialise ? pos.Init()
                            : step.kind == Link     ? pos.Connect()
                            : step.kind == Unlink   ? pos.Disconnect()
                            : step.kind == Info     ? pos.DeviceInfo()
                            : step.kind == Check    ? pos.Test()
                            : step.kind == Pay      ? pos.Purchase(a, int(step.b), c)
                            : step.kind == PayOut   ? pos.CashAdvance(a, int(step.b), c)
                            : step.kind == PayBack
                                ? pos.PurchaseReturn(a, said(0, step.text[0]), said(1, step.text[1]), c)
                            : step.kind == Interim  ? pos.XReport(a)
                            : step.kind == Closing  ? pos.ZReport(a)
                            : step.kind == WaitLong ? pos._WaitResponse()
                                                    : pos.VarifonePrintResponse();
        note(result ? "true" : "false");
    }

    void set(const TStep& step)
    {
        const QVariant value = step.b == 0   ? QVariant(step.text.value(1))
                               : step.b == 1 ? QVariant(int(step.a))
                                             : QVariant(step.a != 0);
        FPos->setProperty(step.text[0].toLatin1().constData(), value);
    }

    void assign(int event, int number)
    {
        TPos& pos = *FPos;
        if (event == evLog) {
            return TStage::assign(pos, &TPos::SetOnLog, number, teller("log", number, FPos));
        }
        TStage::assign(pos, event == evError ? &TPos::SetOnError : &TPos::SetOnStatus, number,
                       [this, event, number](auto* sender, int code, const QString& text) {
                           if (FWild.nested > 0 && depth() < 3 && FDice.chance(2)) {
                               nest({Destroy}, false);
                               if (FDice.chance(30)) {
                                   raise();
                               }
                           }
                           teller(event == evError ? "error" : "status", number, FPos)(sender, code, text);
                       });
    }

    static QString cuttable(TDice& d)
    {
        return d.chance(50) ? sampleResponse(d) : QString::fromLatin1(d.noise(12, QByteArray(";; ;a0")));
    }

    void cut(const QString& text, int number)
    {
        if constexpr (World::isModel) {
            note(modelField(text, number, ';') + ' ' + modelField(text, number, ' ') + ' ' +
                 modelErrorText(QString::number(number * 7)));
        } else {
            note(TBankPOS::parseblue(text, number) + ' ' + TBankPOS::parseblueex(text, number) + ' ' +
                 TBankPOS::errorblue(QString::number(number * 7)));
        }
    }

    TModelLibrary FModelLibrary;
    std::shared_ptr<testkit::TMemoryLibrary> FLibrary = std::make_shared<testkit::TMemoryLibrary>();
    std::vector<std::unique_ptr<TRegisteredClass>> FClasses;
    std::map<QString, int> FConstants;
    TGround<World> ground;
    std::shared_ptr<TPos> FPos;
    bool FDesigning = false;
    int FType = 0;
    bool FRestless = false; // the type is changed often
    int FFaults = 0;        // of a thousand calls
};

} // namespace

TEST(BankPosModel, PlaysLikeTheComponent)
{
    compare<TPosStage>(300, {"splitter: *", "port: *", "code page lacks a character", "remote: *",
                             "destroyed from the event loop"});
}

} // namespace tnv5::bank::model
