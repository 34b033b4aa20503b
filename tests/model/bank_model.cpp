#include "model/bank_model.h"

namespace tnv5::bank::model {

namespace {

constexpr qint64 kUnitSeconds = 1800;
const TModelBank::TFields kNothing{"", "", "", "", "", "", "", "0"};

/// Where the packet at the beginning of a buffer ends; 0: more must come.
qsizetype packetLength(const QByteArray& buffer)
{
    int etxs = 0;
    qsizetype afterEtx = 0; // index behind the last one
    qsizetype afterEot = 0;
    for (qsizetype i = 0; i < buffer.size(); ++i) {
        if (buffer[i] == 3) {
            ++etxs;
            afterEtx = i + 1;
        } else if (buffer[i] == 4) {
            afterEot = i + 1;
        }
    }
    if (either<"end: EOT", "end: no EOT">(afterEot > afterEtx)) {
        return afterEot;
    }
    if (!either<"end: ETX", "end: none">(etxs > 0)) {
        return 0;
    }
    if (either<"end: check byte", "end: ETX is last">(afterEtx < buffer.size())) {
        return afterEtx + 1;
    }
    return either<"end: check byte is ETX", "end: check byte awaited">(etxs > 1) ? afterEtx : 0;
}

QString valueIn(const QString& packet, const QString& tag)
{
    const qsizetype at = position(tag, packet);
    if (at == 0) {
        hit<"value: no tag">();
        return {};
    }
    QString value;
    for (qsizetype i = at - 1 + tag.size(); i < packet.size(); ++i) {
        if (packet[i] == u'\x1C' || packet[i] == u'\x03') {
            hit<"value: ended">();
            return value;
        }
        if (value.size() == 1000) {
            hit<"value: cut">();
            return value;
        }
        value += packet[i];
    }
    hit<"value: to the end">();
    return value;
}

bool sound(const QString& packet)
{
    const qsizetype etx = position(QChar(3), packet);
    int check = 0;
    for (qsizetype i = 2; i <= etx; ++i) {
        check ^= packet[i - 1].unicode();
    }
    return etx > 0 && rest(packet, etx + 1) == QString(QChar(check));
}

QByteArray twelve(int number)
{
    QByteArray digits = QByteArray::number(number);
    while (digits.size() < 12) {
        digits.prepend('0');
    }
    return digits;
}

} // namespace

TModelBank::TModelBank(TModelWorld& world, bool designing)
    : TModel(world, designing),
      FLastAsk(world.clock.timeOfDay()),
      FTimer(world, 1000, [this] { tick(); }),
      FSplitter(world, [this](const QByteArray& bytes) { packet(textOf(bytes, false)); })
{
    FSplitter.Stop.clear();
    FSplitter.OnStart = [this](const QByteArray& buffer, qsizetype& at) {
        if (spoken()) {
            at = buffer.lastIndexOf('\x02') + 1;
        }
    };
    FSplitter.OnStop = [this](const QByteArray& buffer, qsizetype& at) {
        if (spoken()) {
            at = packetLength(buffer);
        } else {
            hit<"version taken away inside a packet">();
        }
    };
}

void TModelBank::die()
{
    FSplitter.attach(nullptr);
    FTimer.setEnabled(false);
    TModel::die();
}

void TModelBank::SetComport(TModelPort* port)
{
    FPort = port;
    if (!FDesigning) {
        FSplitter.attach(port);
    }
}

bool TModelBank::connectPort(bool open)
{
    TModelPort* const port = ComPort();
    if (port == nullptr) {
        hit<"connection: no port">();
        error(GetMessage(0));
        return false;
    }
    bool done = true;
    attempt(
        [&] {
            if (either<"connection: open", "connection: close">(open)) {
                SetUpComport();
                port->Open();
            } else {
                port->Close();
            }
        },
        [&](const QString& failure) {
            either<"connection: not opened", "connection: not closed">(open);
            done = false;
            error(failure);
        });
    if (done && open && either<"connection: waits for the card", "connection: nobody logs">(bool(FOnLog))) {
        error(GetMessage(7));
    }
    return done;
}

void TModelBank::SetUpComport()
{
    TModelPort* const port = ComPort();
    if (port != nullptr && spoken()) {
        hit<"set up">();
        port->SetBaudRate(9600);
        port->SetDataBits(8);
        port->SetParity(0);
        port->SetStopBits(0);
        port->SetReadGap(0);
    } else {
        either<"set up: no version", "set up: no port">(port != nullptr);
    }
}

QString TModelBank::GetMessage(int index) const
{
    static const char* const russian[] = {"Не найден компонент для чтения порта!",
                                          "Запрос суммы платежа от терминала...",
                                          "Отмена операции...",
                                          "Отправлена сумма платежа ",
                                          "Ожидание ответа...",
                                          "Ошибка",
                                          "Подтверджено",
                                          "Ожидание карты..."};
    static const char* const ukrainian[] = {"Не знайдено компонент для обробки порта!",
                                            "Запит на суму платежу від терминалу...",
                                            "Скасування операції...",
                                            "Відправлена сума платежу ",
                                            "Очікування відповіді...",
                                            "Помилка",
                                            "Підтверджено",
                                            "Очікування картки..."};
    static const char* const english[] = {"Com port not found!",
                                          "Request for payment is coming...",
                                          "Canceling operation...",
                                          "Payment amount has been sent ",
                                          "Waiting answer...",
                                          "Error",
                                          "Confirmed",
                                          "Waiting card..."};
    static const char* const* const languages[] = {russian, ukrainian, english};
    return FLang < 0 || FLang > 2 || index < 0 || index > 7
               ? QString()
               : QStringLiteral("[%1] ").arg(index + 1) + QString::fromUtf8(languages[FLang][index]);
}

void TModelBank::GetPosList(QStringList& names)
{
    names = QStringList{"Не выбрано"};
    for (const char* const version : {"3", "3+", "3.2"}) {
        names << QStringLiteral("«Ingenico» ICT220 Ver. ") + version;
    }
}

QString TModelBank::CutValue(const QString& packet, const QString& tag) const
{
    return either<"cut", "cut: no version">(spoken()) ? valueIn(packet, tag) : QString();
}

QString TModelBank::MakeStr(QChar character, int count)
{
    QString text;
    for (; count > 0; --count) {
        text += character;
    }
    return text;
}

TModelBank::TFields TModelBank::fieldsOf(const QString& text) const
{
    TFields fields;
    const char* const tags[] = {"01=", "04=", "02=", "03=", "06=", "10="};
    std::transform(std::begin(tags), std::end(tags), fields.begin(),
                   [&](const char* tag) { return valueIn(text, tag); });
    way<"version 1", "version 2", "version 3">(FType - 1);
    fields[6] = FType == 1 ? "CT" : valueIn(text, FType == 2 ? "41=" : "42=");
    fields[7] = FType == 1 ? "0" : valueIn(text, FType == 2 ? "40=" : "41=");
    return fields;
}

void TModelBank::packet(const QString& text)
{
    FLastAsk = FWorld.clock.timeOfDay();
    if (!either<"sound", "spoilt">(sound(text))) {
        write("!");
        return;
    }
    const TFields fields = fieldsOf(text);
    log("Operation " + text);
    if (holds(text, "\x02\x05\x03")) {
        amountRequest();
    } else if (holds(text, "01=") && holds(text, "06=")) {
        answer(fields);
    } else if (holds(text, "01=") && holds(text, "03=") && holds(text, "10=")) {
        card(fields);
    } else if (either<"end of the dialogue", "unknown packet">(holds(text, "\x04"))) {
        bool apply = false;
        tell("FINISH", kNothing, apply);
    }
}

void TModelBank::amountRequest()
{
    bool apply = false;
    tell("WAIT", kNothing, apply);
    log(GetMessage(1));
    write("\x06");
    int amount = 0;
    int discount = 0;
    fire(FOnAmount, this, amount, discount, apply);
    if (!either<"amount", "amount refused">(apply)) {
        write("!");
        log(GetMessage(2));
        tell("CANCEL_1", kNothing, apply);
        return;
    }
    QByteArray body = "05=" + twelve(amount);
    if (either<"discount", "no discount">(discount > 0)) {
        body += "\x1C"
                "41=" +
                twelve(discount);
    }
    body += '\x03';
    char check = 0;
    for (const char byte : body) {
        check = char(check ^ byte);
    }
    write('\x02' + body + check);
    log(GetMessage(3) + QString::number(amount));
    FAwaiting = true;
    FLastAsk = FWorld.clock.timeOfDay();
    either<"another amount is awaited", "an amount is awaited">(FTimer.enabled());
    FTimer.setEnabled(true);
    tell("WAIT", kNothing, apply);
    log(GetMessage(4));
}

void TModelBank::answer(const TFields& fields)
{
    either<"answer to the amount", "answer to nothing">(FAwaiting);
    FTimer.setEnabled(false);
    FAwaiting = false;
    bool apply = false;
    tell("GET", fields, apply);
    if (!either<"answer", "answer refused">(apply)) {
        write("!");
        log(GetMessage(2));
        tell("CANCEL_2", fields, apply);
        return;
    }
    write("\x06");
    const QString code = fields[4] + ";";
    if (either<"code in the first list", "code not in the first list">(position(code, FCodeOk) > 0)) {
        log(GetMessage(6));
        tell("OK", fields, apply);
    }
    if (either<"code in the second list", "code not in the second list">(position(code, FCodeError) > 0)) {
        log(GetMessage(5));
        tell("ERROR", fields, apply);
    }
}

void TModelBank::card(const TFields& fields)
{
    bool apply = false;
    tell("START", fields, apply);
    if (either<"card", "card refused">(apply)) {
        write("\x06");
        return;
    }
    write("!");
    log(GetMessage(2));
    tell("CANCEL_3", fields, apply);
}

void TModelBank::tick()
{
    if (!IsConnected()) {
        hit<"tick: not connected">();
    } else if (FAwaiting && either<"time out", "in time">(
                                apart(FWorld.clock.timeOfDay(), FLastAsk, FTimeOut * kUnitSeconds))) {
        FAwaiting = false;
        FTimer.setEnabled(false);
        bool apply = false;
        tell("TIMEOUT", kNothing, apply);
    }
}

void TModelBank::tell(const QString& status, const TFields& fields, bool& apply)
{
    fire(FOnOperation, this, fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], apply, status,
         fields[6], fields[7]);
}

void TModelBank::write(const QByteArray& bytes)
{
    if (either<"written", "not connected">(IsConnected())) {
        callOut([&] { ComPort()->Write(bytes); });
    }
}

} // namespace tnv5::bank::model
