#include "bank_model.h"

#include <cstdlib>

namespace tnv5::bank::model {

namespace {

constexpr std::int64_t kDay = 86'400'000;

/// Length of the packet at the beginning of a buffer; 0: more must come.
std::size_t packetLength(const std::string& buffer)
{
    std::size_t etxs = 0;
    std::size_t afterEtx = 0; // index behind the last one
    std::size_t afterEot = 0;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        if (buffer[i] == 3) {
            ++etxs;
            afterEtx = i + 1;
        } else if (buffer[i] == 4) {
            afterEot = i + 1;
        }
    }
    if (afterEot > afterEtx) {
        return afterEot;
    }
    if (etxs == 0) {
        return 0;
    }
    if (afterEtx < buffer.size()) {
        return afterEtx + 1;
    }
    return etxs > 1 ? afterEtx : 0;
}

bool has(const std::string& bytes, const char* part)
{
    return bytes.find(part) != std::string::npos;
}

std::string valueIn(const std::string& bytes, const std::string& tag)
{
    const std::size_t at = tag.empty() ? std::string::npos : bytes.find(tag);
    if (at == std::string::npos) {
        return {};
    }
    std::string value;
    for (std::size_t i = at + tag.size(); i < bytes.size() && value.size() < 1000; ++i) {
        if (bytes[i] == 0x1C || bytes[i] == 3) {
            break;
        }
        value += bytes[i];
    }
    return value;
}

QString text(const std::string& bytes)
{
    return QString::fromLatin1(bytes.data(), qsizetype(bytes.size()));
}

std::string twelve(int number)
{
    std::string digits = std::to_string(number);
    while (digits.size() < 12) {
        digits.insert(0, "0");
    }
    return digits;
}

} // namespace

QString TModel::message(int number) const
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
    return FLanguage < 0 || FLanguage > 2
               ? QString()
               : QStringLiteral("[%1] ").arg(number) + QString::fromUtf8(languages[FLanguage][number - 1]);
}

template <class Body>
void TModel::guard(Body&& body)
{
    try {
        body();
    } catch (const TGone&) {
        return;
    } catch (const std::exception& error) {
        FHost.note(QStringLiteral("raised ") + QString::fromUtf8(error.what()));
    }
}

/// The host's code: afterwards the component may be gone.
void TModel::call(const std::function<void()>& body)
{
    body();
    if (!FAlive) {
        throw TGone();
    }
}

void TModel::log(const QString& line)
{
    if (FHasLog) {
        call([&] { FHost.event("log " + line); });
    }
}

void TModel::operation(const QString& status, const TFields& fields, bool& apply)
{
    if (FHasOperation) {
        call([&] { FHost.operation(status + u' ' + fields.values.join(u'|'), apply); });
    }
}

void TModel::write(const std::string& bytes)
{
    if (!FLinked || !FOpen) {
        return;
    }
    if (FFailing) {
        throw std::runtime_error("line gone");
    }
    FHost.note("write " + text(bytes));
}

void TModel::link(bool link)
{
    FLinked = link;
    FBuffer.clear();
    FInside = false;
}

void TModel::setConnection(bool open)
{
    guard([&] {
        if (!FLinked) {
            if (FHasError) {
                call([&] { FHost.event("error " + message(1)); });
            }
            FHost.note("connection 0");
            return;
        }
        FOpen = open;
        if (open && FHasLog && FHasError) {
            call([&] { FHost.event("error " + message(8)); });
        }
        FHost.note("connection 1");
    });
}

void TModel::feed(const QByteArray& bytes)
{
    if (!FLinked) {
        return;
    }
    FBuffer.append(bytes.constData(), std::size_t(bytes.size()));
    while (FAlive && !FBuffer.empty()) {
        if (!FInside) {
            const std::size_t start = spoken() ? FBuffer.rfind('\x02') : std::string::npos;
            if (start == std::string::npos) {
                FBuffer.clear();
                return;
            }
            FBuffer.erase(0, start);
            FInside = true;
        }
        const std::size_t length = spoken() ? packetLength(FBuffer) : 0;
        if (length == 0) {
            return;
        }
        const std::string whole = FBuffer.substr(0, length);
        FBuffer.erase(0, length);
        FInside = false;
        guard([&] { packet(whole); });
    }
}

TModel::TFields TModel::fieldsOf(const std::string& bytes)
{
    TFields fields;
    fields.values.clear();
    for (const char* tag : {"01=", "04=", "02=", "03=", "06=", "10="}) {
        fields.values << text(valueIn(bytes, tag));
    }
    if (FType == 1) {
        fields.values << "CT"
                      << "0";
    } else if (FType == 2) {
        fields.values << text(valueIn(bytes, "41=")) << text(valueIn(bytes, "40="));
    } else {
        fields.values << text(valueIn(bytes, "42=")) << text(valueIn(bytes, "41="));
    }
    return fields;
}

void TModel::packet(const std::string& bytes)
{
    FLastAsk = FNow % kDay;
    if (!spoken()) {
        return;
    }
    const std::size_t etx = bytes.find('\x03');
    int check = 0;
    for (std::size_t i = 1; etx != std::string::npos && i <= etx; ++i) {
        check ^= static_cast<unsigned char>(bytes[i]);
    }
    if (etx == std::string::npos || bytes.substr(etx + 1) != std::string(1, static_cast<char>(check))) {
        write("!");
        return;
    }
    const TFields fields = fieldsOf(bytes);
    log("Operation " + text(bytes));
    bool apply = false;
    if (has(bytes, "\x02\x05\x03")) {
        amountRequest();
    } else if (has(bytes, "01=") && has(bytes, "06=")) {
        answer(fields);
    } else if (has(bytes, "01=") && has(bytes, "03=") && has(bytes, "10=")) {
        card(fields);
    } else if (has(bytes, "\x04")) {
        operation("FINISH", {}, apply);
    }
}

void TModel::amountRequest()
{
    bool apply = false;
    operation("WAIT", {}, apply);
    log(message(2));
    write("\x06");
    int amount = 0;
    int discount = 0;
    if (FHasAmount) {
        call([&] { FHost.amount("amount", amount, discount, apply); });
    }
    if (!apply) {
        write("!");
        log(message(3));
        operation("CANCEL_1", {}, apply);
        return;
    }
    std::string body = "05=" + twelve(amount);
    if (discount > 0) {
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
    log(message(4) + QString::fromStdString(std::to_string(amount)));
    FAwaiting = true;
    FLastAsk = FNow % kDay;
    if (!FTicking) {
        FTicking = true;
        FDue = FNow + 1000;
    }
    operation("WAIT", {}, apply);
    log(message(5));
}

void TModel::answer(const TFields& fields)
{
    FTicking = false;
    FAwaiting = false;
    bool apply = false;
    operation("GET", fields, apply);
    if (!apply) {
        write("!");
        log(message(3));
        operation("CANCEL_2", fields, apply);
        return;
    }
    write("\x06");
    const QString code = fields.values[4] + ";";
    if (FOk.indexOf(code) >= 0) {
        log(message(7));
        operation("OK", fields, apply);
    }
    if (FError.indexOf(code) >= 0) {
        log(message(6));
        operation("ERROR", fields, apply);
    }
}

void TModel::card(const TFields& fields)
{
    bool apply = false;
    operation("START", fields, apply);
    if (apply) {
        write("\x06");
        return;
    }
    write("!");
    log(message(3));
    operation("CANCEL_3", fields, apply);
}

void TModel::advance(std::int64_t ms)
{
    const std::int64_t target = FNow + ms;
    while (FAlive && FTicking && FDue <= target) {
        FNow = FDue;
        FDue += 1000;
        guard([&] { tick(); });
    }
    FNow = target;
}

void TModel::tick()
{
    const std::int64_t seconds = std::abs(FNow % kDay - FLastAsk) / 1000;
    if (FLinked && FOpen && FAwaiting && seconds > std::int64_t(FTimeOut) * 1800) {
        FAwaiting = false;
        FTicking = false;
        bool apply = false;
        operation("TIMEOUT", {}, apply);
    }
}

QString TModel::cut(const QString& packet, const QString& tag)
{
    return spoken() ? text(valueIn(packet.toLatin1().toStdString(), tag.toLatin1().toStdString()))
                    : QString();
}

} // namespace tnv5::bank::model
