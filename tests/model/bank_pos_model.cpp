#include "model/bank_pos_model.h"

#include <array>

namespace tnv5::bank::model {

namespace {

constexpr const char* kNumbers[] = {"PosType", "ComPort",  "ComPortRate", "IPPort",
                                    "TimeOut", "Language", "LastError",   "LastStatus"};

QString textIn(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? "True" : "False";
    }
    return value.toString();
}

} // namespace

// ---- between the host, the library and the rules

TModelPos::TModelPos(TModelWorld& world, bool designing) : TModel(world, designing)
{
    for (const char* const name : kTextProperties) {
        FProperties[name] = QString();
    }
    for (const char* const name : kNumbers) {
        FProperties[name] = 0;
    }
    FProperties["log"] = false;
}

void TModelPos::die()
{
    FWorld.guarded([this] { log("Заверщення роботи"); });
    if (FHearing) {
        Library->listener = nullptr;
    }
    TModel::die();
}

void TModelPos::keep(const char* property, const QVariant& value)
{
    FProperties.at(property) = textIn(value);
}

void TModelPos::status(int code, const QString& text)
{
    FProperties["LastStatus"] = code;
    FProperties["LastStatusMsg"] = text;
    fire(FOnStatus, this, code, text);
}

void TModelPos::error(int code, const QString& text)
{
    FProperties["LastError"] = code;
    FProperties["LastErrorMsg"] = text;
    fire(FOnError, this, code, text);
}

bool TModelPos::says(bool good, const char* yes, const char* no)
{
    log(good ? yes : no);
    return good;
}

/// A public method: what fails in the library is an error of ours and no result.
template <class Result, class Body>
Result TModelPos::run(const char* begins, Body&& body, Result ifFailed)
{
    return operation(
        [&] {
            if (begins != nullptr) {
                log(begins);
            }
            std::optional<QString> broken;
            try {
                return Result(body(type()));
            } catch (const TBroken& failure) {
                broken = failure.text;
            }
            error(-1, "Помилка OLE об'єкту. " + *broken);
            return ifFailed;
        },
        ifFailed);
}

QVariant TModelPos::ask(const QString& name, const QVariantList& ins, QVariantList* outs)
{
    if (!either<"library: called", "library: no object">(FCreated)) {
        throw TBroken{};
    }
    QVariantList none;
    QVariant result;
    attempt([&] { result = Library->call(name, ins, outs == nullptr ? none : *outs); },
            [](const QString& text) {
                hit<"library: a call fails">();
                throw TBroken{text};
            });
    return result;
}

int TModelPos::numberFrom(const QVariant& value)
{
    if (value.typeId() == QMetaType::QString) {
        bool isNumber = false;
        const int number = value.toString().toInt(&isNumber);
        if (!either<"library: a number in a text", "library: no number">(isNumber)) {
            throw TBroken{"The value \"" + value.toString() + "\" is no number"};
        }
        return number;
    }
    return value.typeId() == QMetaType::Bool ? (value.toBool() ? -1 : 0) : value.toInt();
}

bool TModelPos::askTruth(const QString& name, const QVariantList& ins, QVariantList* outs)
{
    const QVariant value = ask(name, ins, outs);
    if (value.typeId() != QMetaType::QString) {
        return value.toBool();
    }
    bool isNumber = false;
    const int number = value.toString().toInt(&isNumber);
    if (!isNumber) {
        hit<"library: no truth">();
        throw TBroken{"The value \"" + value.toString() + "\" is no boolean"};
    }
    return number != 0;
}

int TModelPos::askNumber(const QString& name, const QVariantList& ins)
{
    return numberFrom(ask(name, ins));
}

void TModelPos::write(const QString& name, const QVariant& value)
{
    if (!FCreated) {
        throw TBroken{};
    }
    attempt([&] { Library->put(name, value); }, [](const QString& text) { throw TBroken{text}; });
}

int TModelPos::named(const QString& name)
{
    if (!FCreated) {
        throw TBroken{};
    }
    int value = 0;
    attempt([&] { value = Library->constant(name); },
            [](const QString& text) {
                hit<"library: no such constant">();
                throw TBroken{text};
            });
    return value;
}

void TModelPos::ShowError(int code, const QString& text)
{
    operation([&] { error(code, QString(text)); });
}

void TModelPos::_OnMsgReceived(const QString& text) // NOLINT(bugprone-reserved-identifier)
{
    operation([&] { status(0, QString(text)); });
}

void TModelPos::_OnTrxComplete(int code) // NOLINT(bugprone-reserved-identifier)
{
    FProperties["LastError"] = code;
}

// ---- the beginning

bool TModelPos::Init()
{
    return run(
        "Ініціалізація об'єкту",
        [this](int type) {
            if (!either<"init: a type", "init: no type">(type >= 0 && type <= 4)) {
                return false;
            }
            if (!either<"init: again", "init: first">(FCreated)) {
                if (FDesigning) {
                    hit<"init: in the designer">();
                    return false;
                }
                std::optional<QString> trouble;
                attempt([&] { Library->create(type); }, [&](const QString& text) { trouble = text; });
                if (trouble) {
                    hit<"init: creation fails">();
                    error(-1, "Неможливо створити OLE об'єкт. " + *trouble);
                    return false;
                }
                FCreated = true;
                if (type == 2) {
                    FHearing = true;
                    Library->listener = [this](const QString& name, const QVariant& value) {
                        if (name == "OnMsgReceived") {
                            _OnMsgReceived(textIn(value));
                        } else if (name == "OnTrxComplete") {
                            _OnTrxComplete(value.toInt());
                        }
                    };
                }
            }
            configure(type);
            return true;
        },
        false);
}

void TModelPos::configure(int type)
{
    way<"init: 0", "init: 1", "init: 2", "init: 3", "init: 4">(type);
    const bool logging = property("log").toBool();
    const QString file = kept("logfile");
    if (type == 0) {
        keep("LibVersion", ask("LibraryVersion"));
        const int limit = property("TimeOut").toInt();
        if (either<"init: a limit", "init: no limit">(limit > 0)) {
            ask("SetUserTimeOut", {limit});
        }
    } else if (type == 1) {
        keep("LibVersion", ask("LibraryVersion"));
        // what the host writes meanwhile counts
        const bool now = property("log").toBool();
        ask("useLogging", {now ? 1 : 0, now ? kept("logfile") : QString()});
        ask("SetErrorLang", {property("Language").toInt()});
    } else if (type == 2) {
        keep("LibVersion", ask("DLLVersion"));
        ask("PathToLogging", {kept("logfile")});
        ask(property("log").toBool() ? "LoggingON" : "LoggingOFF");
    } else if (type == 3) {
        write("SaveLog", logging);
        write("LogFileName", kept("logfile"));
    } else {
        keep("LibVersion", get("POS_SOFT_VER"));
    }
}

bool TModelPos::Connect()
{
    return operation(
        [this] {
            const bool done = run(
                "Починаємо з'єднання з терміналом", [this](int type) { return open(type); }, false);
            return !FDead && says(done, "З'єдналися", "Не з'єдналися");
        },
        false);
}

bool TModelPos::open(int type)
{
    const bool network = either<"connect: network", "connect: serial">(!kept("IP").isEmpty());
    const auto number = [this](const char* name) { return property(name).toInt(); };
    switch (type) {
    case 0:
    case 1:
        if (network) {
            ask("CommOpenTCP", {kept("IP"), number("IPPort")});
        } else if (type == 0) {
            ask("SetCommNum", {number("ComPort")});
            ask("CommOpen");
        } else {
            ask("CommOpen", {number("ComPort"), number("ComPortRate")});
        }
        return waitForResult();
    case 2:
        write("TransportType", network ? 1 : 0);
        if (network) {
            write("PosIP", kept("IP"));
        }
        write("PosPort", network ? number("IPPort") : number("ComPort"));
        return fine("PosOpen") && fine("PosEchoTest");
    case 3:
        return padFine(askNumber("OpenPort", {QString("COM%1").arg(number("ComPort"))})) &&
               padFine(askNumber("Ping"));
    case 4: {
        const QString where = network ? kept("IP") + ":" + QString::number(number("IPPort"))
                                      : QString("COM%1").arg(number("ComPort"));
        return askTruth("pos_open", {where});
    }
    default:
        hit<"connect: no type">();
        return false;
    }
}

bool TModelPos::Disconnect()
{
    return run(
        "Відключення терміналу",
        [this](int type) {
            const std::array names{"CommClose", "CommClose", "PosClose", "ClosePort", "pos_close"};
            if (type < 0 || type > 4) {
                hit<"disconnect: no type">();
                return false;
            }
            ask(names.at(std::size_t(type)));
            return true;
        },
        false);
}

// ---- waiting

bool TModelPos::_WaitResponse() // NOLINT(bugprone-reserved-identifier)
{
    return run(
        nullptr, [this](int) { return waitForResult(); }, false);
}

bool TModelPos::waitForResult()
{
    log("Цикл очікування");
    if (!FCreated) {
        hit<"wait: no object">();
        return false;
    }
    switch (type()) {
    case 0:
        return askUntilOver(false);
    case 1:
        return askUntilOver(true);
    case 2:
        return receiveLong();
    case 4:
        hit<"wait: type 4">();
        return true;
    default:
        hit<"wait: another type">();
        return false;
    }
}

bool TModelPos::askUntilOver(bool second)
{
    const QString last = second ? "LastResult" : "GetLastResult";
    int result = askNumber(last);
    while (result == 2) {
        if (either<"wait: in progress, 1", "wait: in progress, 0">(second)) {
            const int code = askNumber("LastStatMsgCode");
            status(code, textIn(ask("LastStatMsgDescription")));
        } else {
            status(0, "Зачекайте будь ласка...");
        }
        callOut([this] { FWorld.clock.OnWait(); });
        result = askNumber(last);
    }
    if (result == 1) {
        hit<"wait: refused">();
        const int code = askNumber("GetLastErrorCode");
        error(code, textIn(ask("GetLastErrorText")));
    }
    return either<"wait: success", "wait: no success">(result == 0);
}

bool TModelPos::receiveLong()
{
    const int response = askNumber("pos_receive", {180'000});
    if (response == named("RESP_TIMEOUT")) {
        hit<"wait: time-out">();
        error(response, "Перевищено інтервал очікування");
        return false;
    }
    if (response == named("RESP_BREAK")) {
        hit<"wait: break">();
        error(response, "Операція перервана");
        return false;
    }
    if (response == named("RESP_CONFIRM")) {
        hit<"wait: confirmed">();
        status(response, "Операція підтверджена");
        return true;
    }
    if (either<"wait: declined", "wait: another response">(response == named("RESP_DECLINE"))) {
        error(response, "Операція відхилена");
    }
    return false;
}

// ---- money

bool TModelPos::Purchase(int amount, int discount, int merchant)
{
    return run(
        "Починаємо оплату",
        [&](int type) {
            switch (type) {
            case 0:
                return payFirst(amount, discount, merchant);
            case 1:
                return paySecond(amount, discount, merchant);
            case 2:
                return payByControl(amount, discount, merchant);
            case 3:
                return padPaid("Purchase", {}, amount);
            case 4:
                return payByMessages(amount, merchant);
            default:
                hit<"purchase: no type">();
                return false;
            }
        },
        false);
}

bool TModelPos::payFirst(int amount, int discount, int merchant)
{
    QVariantList outs{amount, discount};
    ask("PosPurchase", {QString::number(merchant)}, &outs);
    if (!waitForResult()) {
        return false;
    }
    if (!either<"purchase 0: done", "purchase 0: not done after all">(askNumber("GetLastResult") == 0)) {
        return false;
    }
    keep("RRN", ask("getRRN"));
    keep("TransactionID", ask("InvoiceNum"));
    return true;
}

bool TModelPos::paySecond(int amount, int discount, int merchant)
{
    QVariantList outs{amount, discount, merchant};
    ask("Purchase", {}, &outs);
    if (!waitForResult() || askNumber("LastResult") != 0) {
        hit<"purchase 1: refused">();
        return false;
    }
    sevenValues();
    ask("Confirm");
    const bool confirmed = waitForResult();
    sevenValues();
    if (!confirmed || askNumber("LastResult") != 0) {
        hit<"purchase 1: confirmation refused">();
        return false;
    }
    hit<"purchase 1: done">();
    ask("ReqCurrReceipt");
    return true;
}

void TModelPos::sevenValues()
{
    const std::pair<const char*, const char*> rows[] = {{"RRN", "RRN"},
                                                        {"TransactionID", "InvoiceNum"},
                                                        {"AuthID", "AuthCode"},
                                                        {"PAN", "PAN"},
                                                        {"IssuerName", "IssuerName"},
                                                        {"MerchantID", "MerchantID"},
                                                        {"TerminalID", "TerminalID"}};
    for (const auto& [property, method] : rows) {
        keep(property, ask(method));
    }
}

/// A call of the control: neither its result nor the code that it tells meanwhile may be other than 0.
bool TModelPos::fine(const QString& name, const QVariantList& ins, const QVariantList& outs)
{
    FProperties["LastError"] = 0;
    QVariantList changed = outs;
    const int result = numberFrom(ask(name, ins, &changed));
    const int told = property("LastError").toInt();
    if (told == 0 && result == 0) {
        hit<"control: fine">();
        return true;
    }
    error(either<"control: a code", "control: a result">(told != 0) ? told : result, kept("LastStatusMsg"));
    return false;
}

bool TModelPos::payByControl(int amount, int discount, int merchant)
{
    if (!fine("PosPurchaseMer", {amount, discount}, {merchant})) {
        return false;
    }
    keep("RRN", ask("TrxRRNp"));
    keep("TransactionID", ask("Receipt"));
    return true;
}

bool TModelPos::CashAdvance(int amount, int, int merchant)
{
    return run(
        "Починаємо видачу готівки",
        [&](int type) {
            if (!either<"cash: type 1", "cash: another type">(type == 1)) {
                return false;
            }
            const QString request =
                QString("<ActionScenarioRequest><Action>CashBack</Action><AddAmount>%1</AddAmount>"
                        "<MerchIdx>%2</MerchIdx></ActionScenarioRequest>")
                    .arg(amount)
                    .arg(merchant);
            ask("StartScenario", {request});
            if (!waitForResult() || askNumber("LastResult") != 0) {
                hit<"cash: refused">();
                return false;
            }
            sevenValues();
            return true;
        },
        false);
}

bool TModelPos::PurchaseReturn(int amount, const QString& rrn, const QString& authId, int merchant)
{
    const QString number = rrn;
    const QString code = authId;
    return run(
        nullptr,
        [&](int type) {
            switch (type) {
            case 1:
                ask("PurchaseReturn", {amount, merchant, number});
                if (!either<"return 1: done", "return 1: refused">(waitForResult())) {
                    return false;
                }
                keep("RRN", number);
                keep("AuthID", ask("AuthCode"));
                return true;
            case 2:
                return payByControl(either<"return 2: amount", "return 2: below zero">(amount > 0) ? -amount
                                                                                                   : amount,
                                    0, merchant);
            case 3:
                return padPaid("VoidOfPurchase", {amount, number, code}, 0);
            default:
                hit<"return: not there">();
                return false;
            }
        },
        false);
}

// ---- reports

bool TModelPos::XReport(int merchant)
{
    return run(
        "Х звіт",
        [&](int type) {
            const auto totals = [this](const auto& value, bool cancelledNumberFirst) {
                keep("TotalsDebitAmt", value(0));
                keep("TotalsDebitNum", value(1));
                keep("TotalsCreditAmt", value(2));
                keep("TotalsCreditNum", value(3));
                const char* const last[] = {"TotalsCancelledAmt", "TotalsCancelledNum"};
                keep(last[cancelledNumberFirst ? 1 : 0], value(4));
                keep(last[cancelledNumberFirst ? 0 : 1], value(5));
            };
            switch (type) {
            case 0:
                ask("PosXBalanceMer", {QString::number(merchant)});
                return waitForResult();
            case 1: {
                ask("GetBatchTotals", {merchant});
                if (!waitForResult()) {
                    return false;
                }
                const std::array names{"TotalsDebitAmt",  "TotalsDebitNum",     "TotalsCreditAmt",
                                       "TotalsCreditNum", "TotalsCancelledAmt", "TotalsCancelledNum"};
                totals([&](std::size_t i) { return ask(names.at(i)); }, false);
                ask("PrintBatchTotals", {merchant});
                if (!either<"X 1: printed", "X 1: not printed">(waitForResult())) {
                    return false;
                }
                ask("ReqCurrReceipt");
                return true;
            }
            case 2:
                return fine("PosXBalanceMer", {merchant});
            case 3:
                return padReport();
            case 4: {
                if (!act("ACTION_XREPORT_SUMMARY")) {
                    return false;
                }
                const std::array names{"POS_DEBIT_AMOUNT",  "POS_DEBIT_NUMBER",     "POS_CREDIT_AMOUNT",
                                       "POS_CREDIT_NUMBER", "POS_CANCELLED_NUMBER", "POS_CANCELLED_AMOUNT"};
                totals([&](std::size_t i) { return get(names.at(i)); }, true);
                return true;
            }
            default:
                hit<"X: no type">();
                return false;
            }
        },
        false);
}

bool TModelPos::ZReport(int merchant)
{
    return run(
        "Z звіт",
        [&](int type) {
            QString response;
            switch (type) {
            case 0:
                ask("PosSettleMer", {QString::number(merchant)});
                return waitForResult();
            case 1:
                ask("Settlement", {merchant});
                if (!waitForResult()) {
                    return false;
                }
                ask("ReqCurrReceipt");
                return true;
            case 2:
                return fine("PosSettleMer", {merchant});
            case 3:
                return padResponse("EndOfDay", {}, response);
            case 4:
                set("POS_REPORT", 1);
                return act("ACTION_CLOSE_DAY");
            default:
                hit<"Z: no type">();
                return false;
            }
        },
        false);
}

// ---- asking

bool TModelPos::DeviceInfo()
{
    return run(
        "Спроба отримати дані про термінал",
        [this](int type) {
            switch (type) {
            case 1:
                keep("DeviceModelName", ask("TerminalInfo"));
                return true;
            case 2:
                keep("DeviceModelName", ask("PosGetInfo"));
                return true;
            case 3: {
                QVariantList outs{QString()};
                if (!padFine(numberFrom(ask("GetPinpadInfo", {}, &outs)))) {
                    return false;
                }
                keep("DeviceModelName", outs[0]);
                return true;
            }
            case 4:
                if (!act("ACTION_POS_INFO")) {
                    return false;
                }
                keep("DeviceSerialNumber", get("POS_SERIAL_NUMBER"));
                keep("DeviceTerminalID", get("POS_LICENSE"));
                keep("DeviceSoftVer", get("POS_SOFT_VER"));
                return true;
            default:
                hit<"info: not there">();
                return false;
            }
        },
        false);
}

bool TModelPos::Test()
{
    return run(
        "Починаємо тест терміналу", [this](int type) { return tests(type); }, false);
}

bool TModelPos::tests(int type)
{
    const auto terminal = [this](bool answers) {
        return says(answers, "Є зв'язок з терміналом", "Нема зв'язку з терміналом");
    };
    const auto bank = [this](bool answers) {
        return says(answers, "Є зв'язок з банком", "Нема зв'язку з банком");
    };
    QString response;
    switch (type) {
    case 0:
        ask("PosEchoTest");
        return terminal(waitForResult());
    case 1:
        ask("Ping");
        return terminal(waitForResult());
    case 2:
        return terminal(fine("PosEchoTest"));
    case 3:
        if (!terminal(padFine(askNumber("Ping")))) {
            return false;
        }
        return bank(padResponse("TestConnection", {}, response));
    case 4: {
        if (!send("ACTION_HOST_ECHO_TEST")) {
            return terminal(false);
        }
        const int got = receive();
        if (got == named("RESP_CONFIRM")) {
            return bank(true);
        }
        if (got == named("RESP_DECLINE")) {
            hit<"test 4: declined">();
            error(got, "Операція відхилена");
        } else if (got == named("RESP_BREAK")) {
            hit<"test 4: broken off">();
            error(got, "Операція перервана");
        } else {
            failWith(got);
        }
        return bank(false);
    }
    default:
        hit<"test: no type">();
        return false;
    }
}

// ---- the third library

bool TModelPos::padFine(int code)
{
    if (either<"pad: fine", "pad: a code">(code == 0)) {
        return true;
    }
    error(code, modelErrorText(QString::number(code)));
    return false;
}

/// A call whose last argument is its response, which is logged; whether the second field is "0".
bool TModelPos::padResponse(const QString& name, const QVariantList& ins, QString& response, int amount)
{
    QVariantList outs{QString()};
    const bool hasAmount = name == "Purchase";
    if (hasAmount) {
        outs.prepend(amount);
    }
    ask(name, ins, &outs);
    response = textIn(outs.last());
    log(response);
    const QString result = modelField(response, 2, ';');
    if (either<"pad: a good response", "pad: a bad response">(result == "0")) {
        return true;
    }
    const TNumber number = numberOf(result);
    error(number.valid ? number.value : -1, modelErrorText(result));
    return false;
}

bool TModelPos::padPaid(const QString& name, const QVariantList& ins, int amount)
{
    QString response;
    if (!padResponse(name, ins, response, amount)) {
        return false;
    }
    const QString transaction = modelField(response, 6, ';');
    const QString number = modelField(response, 3, ';');
    keep("RRN", number);
    keep("TransactionID", transaction);
    keep("AuthID", modelField(response, 8, ';'));
    log(transaction + " " + number);
    return true;
}

bool TModelPos::padReport()
{
    QString response;
    if (!padResponse("GetXReport", {}, response)) {
        return false;
    }
    QString report;
    const std::array titles{"Продаж", "Повернення"};
    for (int side = 0; side < 2; ++side) {
        const QString field = modelField(response, 3 + side, ';');
        QStringList four;
        for (int i = 1; i <= 4; ++i) {
            four << modelField(field, i, ' ');
        }
        report += QString(titles.at(std::size_t(side))) + "\r\n";
        report += "Дебет Кількість трансакцій " + four[0] + " Сума " + four[1] + "\r\n";
        report += "Кредит Кількість трансакцій " + four[2] + " Сума " + four[3] + "\r\n";
        keep(side == 0 ? "TotalsDebitNum" : "TotalsCancelledNum", four[0]);
        keep(side == 0 ? "TotalsDebitAmt" : "TotalsCancelledAmt", four[1]);
        if (side == 0) {
            keep("TotalsCreditNum", four[2]);
            keep("TotalsCreditAmt", four[3]);
        }
    }
    log(report);
    return true;
}

// ---- the last library

QString TModelPos::get(const char* parameter)
{
    const int number = named(parameter);
    return textIn(ask("pos_get", {number}));
}

void TModelPos::set(const char* parameter, const QVariant& value)
{
    const int number = named(parameter);
    ask("pos_set", {number, value});
}

bool TModelPos::send(const char* action)
{
    const int number = named(action);
    if (either<"message: sent", "message: not sent">(askTruth("pos_send", {number}))) {
        return true;
    }
    error(-1, "Неможливо відправити дані на термінал!");
    return false;
}

int TModelPos::receive()
{
    for (;;) {
        const int response = askNumber("pos_receive", {30'000});
        log("response = " + QString::number(response));
        if (response == named("RESP_MESSAGE")) {
            hit<"message: a text">();
            const QString text = get("RESP_MESSAGE");
            status(response, text);
        } else if (response == named("RESP_IDENTIFIER")) {
            hit<"message: an identifier">();
        } else {
            return response;
        }
        callOut([this] { FWorld.clock.OnWait(); });
    }
}

bool TModelPos::failWith(int response)
{
    if (either<"message: time-out", "message: no success">(response == named("RESP_TIMEOUT"))) {
        error(response, "Перевищено інтервал очікування");
    } else {
        error(response, "Операція не успішна!\r\n" + get("RESP_MESSAGE"));
    }
    return false;
}

bool TModelPos::act(const char* action)
{
    if (!send(action)) {
        return false;
    }
    const int response = receive();
    return either<"message: confirmed", "message: not confirmed">(response == named("RESP_CONFIRM")) ||
           failWith(response);
}

bool TModelPos::payByMessages(int amount, int merchant)
{
    QString number;
    if (either<"purchase 4: a merchant", "purchase 4: no merchant">(merchant > 0)) {
        number = merchantNumber(merchant);
        ask("pos_receive", {1'000});
    }
    set("POS_AMOUNT", amount);
    set("POS_CURRENCY", 980);
    if (merchant > 0) {
        set("POS_MERCHANT_ID", number);
    }
    if (!act("ACTION_PAYMENT")) {
        return false;
    }
    const QString result = get("POS_TRANS_STATUS");
    if (!either<"purchase 4: done", "purchase 4: a bad status">(result == "0")) {
        const TNumber code = numberOf(result);
        error(code.valid ? code.value : -1, "Операція не успішна!\r\n" + get("RESP_MESSAGE"));
        return false;
    }
    return fields();
}

QString TModelPos::GetMerchantID(int index)
{
    return run<QString>(
        nullptr, [&](int type) { return type == 4 ? merchantNumber(index) : QString("-1"); }, "-1");
}

QString TModelPos::merchantNumber(int index)
{
    set("POS_HOST_RECORD", index);
    if (!send("ACTION_HOST_INFO")) {
        return "-1";
    }
    ask("pos_receive", {1'000});
    const QString number = get("POS_MERCHANT_ID");
    return either<"merchant: none", "merchant: found">(number.isEmpty()) ? QString("-1") : number;
}

bool TModelPos::VarifonePrintResponse()
{
    return run(
        nullptr, [this](int type) { return type == 4 && fields(); }, false);
}

bool TModelPos::fields()
{
    QVariantList outs{QString(), QString()};
    bool more = askTruth("pos_get_first", {}, &outs);
    while (more) {
        const QString name = textIn(outs[0]);
        const QString value = textIn(outs[1]);
        log("param =" + name + " Val = " + value);
        if (name == "rrn") {
            hit<"fields: rrn">();
            keep("RRN", value);
        }
        if (name == "approval") {
            hit<"fields: approval">();
            keep("AuthID", value);
        }
        if (name == "trans_rcpt") {
            hit<"fields: trans_rcpt">();
            keep("TransactionID", value);
        }
        outs = {QString(), QString()};
        more = askTruth("pos_get_next", {}, &outs);
    }
    return true;
}

} // namespace tnv5::bank::model
