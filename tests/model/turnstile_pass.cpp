#include "model/turnstile_core.h"

#include <QRegularExpression>
#include <cmath>

// The pass over the table, the host's check, and the commands.

namespace tnv5::turnstile::model {

namespace {

const QString kSent = QStringLiteral("%Отправлено на порт% ");
const QString kNotOpen = QStringLiteral("Порт не открыт или не назначен");
const QString kByHand = QStringLiteral("-1-1-1-1-1");
const QString kButton = QStringLiteral("-2-2-2-2-2");
constexpr double kSecondsPerDay = 86'400;
constexpr double kMsPerDay = 86'400'000;
constexpr double kNoise = 5e-6;     // seconds
constexpr double kLongAgo = 80'000; // seconds that only midnight can put between two times of a scenario

bool isPseudo(const QString& card)
{
    return card == kByHand || card == kButton;
}

/// An answer of the host as a number: numbers as they are, truth as 1 or 0, texts of blanks, one sign,
/// digits.
int wholeNumber(const QVariant& answer)
{
    if (answer.typeId() != QMetaType::QString) {
        return static_cast<int>(std::nearbyint(answer.toDouble()));
    }
    QString text = answer.toString();
    while (text.startsWith(u' ')) {
        text.remove(0, 1);
    }
    while (text.endsWith(u' ')) {
        text.chop(1);
    }
    const bool minus = text.startsWith(u'-');
    if (minus || text.startsWith(u'+')) {
        text.remove(0, 1);
    }
    if (text.isEmpty() || text.contains(QRegularExpression(QStringLiteral("[^0-9]")))) {
        throw TRaised(QStringLiteral("Could not convert variant of type (QString) into type (Integer)"));
    }
    const double value = (minus ? -1 : 1) * text.toDouble();
    if (value > 0x7FFFFFFF || value < -0x80000000LL) {
        throw TRaised(
            QStringLiteral("Overflow while converting variant of type (QString) into type (Integer)"));
    }
    return static_cast<int>(value);
}

int digit(const QString& text, qsizetype position)
{
    const QString character = text.mid(position - 1, 1);
    if (character < u"0" || character > u"9" || character.isEmpty()) {
        throw TRaised(QStringLiteral("'%1' is not a valid integer value").arg(character));
    }
    return character[0].unicode() - u'0';
}

int code(const QString& text, qsizetype position)
{
    const QByteArray byte = bytesOf(text.mid(position - 1, 1));
    return byte.isEmpty() ? 0 : static_cast<uchar>(byte[0]);
}

} // namespace

// ---- the pass over the table

void TModelGate::TCore::pass()
{
    if (busy) {
        hit<"pass inside a pass">();
        if (stack.empty()) {
            setTimerEnabled(false);
        }
        return;
    }
    const std::size_t count = stack.size();
    try {
        for (std::size_t index = 0; index < count; ++index) {
            busy = true;
            if (passOne(index)) {
                busy = false;
                return;
            }
        }
    } catch (...) {
        busy = false;
        throw;
    }
    busy = false;
    either<"pass: records came meanwhile", "pass: no record came">(stack.size() > count);
    if (either<"pass: table empty", "pass: table not empty">(stack.empty())) {
        setTimerEnabled(false);
    }
}

bool TModelGate::TCore::passOne(std::size_t index)
{
    const PRecord record = stack[index];
    if (record->status == u"NEW") {
        decide(record);
    }
    if (record->status == u"OPEN") {
        watchOpen(record);
    }
    if (record->status == u"NOANSWER" && offer(record, 3, index)) {
        return true;
    }
    if (record->status == u"CRC-ERROR" && offer(record, 3, index)) {
        hit<"CRC-ERROR retired">();
        return true;
    }
    if (record->status == u"TIMEOUT" && offer(record, 1, index)) {
        return true;
    }
    if (record->status == u"CLOSE") {
        hit<"refused pass removed">();
        reportStack(*record);
        remove(index);
        return true;
    }
    if (record->status == u"PROGRESS") {
        reportStack(*record);
        if (channelOf(record->device) == u"A" && either<"progress times out", "progress waits">(late(
                                                     *record, qint64{numberOf(TNumber::TimeOut)} + 10))) {
            record->status = QStringLiteral("TIMEOUT");
        }
    }
    return record->status == u"FINISH" && offer(record, 2, index);
}

void TModelGate::TCore::decide(const PRecord& record)
{
    reportStack(*record);
    const int answer = sql(record, 0);
    if (answer == 0) {
        either<"pseudo-card refused", "card refused">(isPseudo(record->card));
        sendCom(record, 0);
        record->status = QStringLiteral("CLOSE");
    } else if (answer == 1) {
        sendCom(record, 1);
        if (!either<"pseudo-card opened", "card opened">(isPseudo(record->card))) {
            record->status = QStringLiteral("OPEN");
        }
    } else {
        either<"pseudo-card undecided", "card undecided">(isPseudo(record->card));
    }
}

void TModelGate::TCore::watchOpen(const PRecord& record)
{
    reportStack(*record);
    const QString channel = channelOf(record->device);
    if (channel == u"A" && either<"open turnstile times out", "open turnstile waits">(
                               late(*record, qint64{numberOf(TNumber::TimeOut)} + 2))) {
        record->status = QStringLiteral("TIMEOUT");
    }
    if (channel == doorIndex && either<"open door times out", "open door waits">(late(*record, 3))) {
        record->status = QStringLiteral("TIMEOUT");
    }
    if (record->statusHard.isEmpty() && record->status == u"OPEN" &&
        either<"no answer", "answer awaited">(late(*record, 1))) {
        record->status = QStringLiteral("NOANSWER");
    }
}

/// Reports the record and asks the host whether it may go.
bool TModelGate::TCore::offer(const PRecord& record, int how, std::size_t index)
{
    reportStack(*record);
    const bool retired = sql(record, how) == 1;
    if (how == 1) {
        either<"mode 1: retired", "mode 1: kept">(retired);
    } else if (how == 2) {
        either<"mode 2: retired", "mode 2: kept">(retired);
    } else {
        either<"mode 3: retired", "mode 3: kept">(retired);
    }
    if (retired) {
        remove(index);
    }
    return retired;
}

void TModelGate::TCore::remove(std::size_t index)
{
    stack.erase(stack.begin() + static_cast<std::ptrdiff_t>(index));
}

bool TModelGate::TCore::late(const TRecord& record, qint64 limit) const
{
    const auto now = static_cast<double>(owner.FNow % static_cast<qint64>(kMsPerDay)) / kMsPerDay;
    const double start = static_cast<double>(record.startMs) / kMsPerDay;
    if (std::abs(now - start) * kSecondsPerDay > kLongAgo) {
        hit<"a pass across midnight">();
    }
    return elapsed(now, start, static_cast<double>(limit));
}

bool TModelGate::TCore::elapsed(double first, double second, double limit)
{
    return limit < std::trunc(std::abs(first - second) * kSecondsPerDay + kNoise);
}

int TModelGate::TCore::sql(const PRecord& record, int how)
{
    if (!record) {
        hit<"check without a pass">();
        return -1;
    }
    if (how < 0 || how > 3) {
        hit<"check of another mode">();
        return -1;
    }
    int result = how == 0 ? -1 : 1;
    if (const int assigned = handler(TEvent::Sql)) {
        std::optional<QString> message;
        try {
            QVariant answer = -1;
            const QStringList values{record->device, record->card, record->status};
            host([&] { // an answer that is no number counts as a raising handler
                listener().sql(
                    assigned, values, record->image, [&](int width) { record->image = width; }, how, answer);
                result = wholeNumber(answer);
            });
        } catch (const TGone&) {
            throw;
        } catch (const TRaised&) {
            hit<"unreadable answer">();
            message = raisedText();
        } catch (...) {
            hit<"check handler raised">();
            message = raisedText();
        }
        if (message) {
            error(QStringLiteral("[05] ") + *message);
        }
    } else {
        either<"no check handler: undecided", "no check handler: retired">(how == 0);
    }
    if (how == 0 && isPseudo(record->card)) {
        record->status = QStringLiteral("OPEN");
    }
    return result;
}

// ---- commands

void TModelGate::TCore::sendCom(const PRecord& record, int yesnot)
{
    if (!record || (yesnot != 0 && yesnot != 1)) {
        either<"command for no pass", "command neither open nor refuse">(!record);
        return;
    }
    const QString address = record->device;
    const QString start = QStringLiteral("$") + address;
    const QString time = QString::number(qint64{numberOf(TNumber::TimeDelayOpen)} + 1);
    if (yesnot == 0) {
        hit<"refuse command">();
        send(start + QString::number(numberOf(TNumber::RelayClose)) + QStringLiteral("00"),
             QStringLiteral("[04] "));
    } else if (either<"open command, turnstile", "open command, other">(channelOf(address) == u"A")) {
        send(start + QString::number(numberOf(TNumber::RelayOpen)) + QStringLiteral("0") + time,
             QStringLiteral("[04] "));
    } else {
        send(start + QString::number(numberOf(TNumber::RelayOpenDoor)) + QStringLiteral("2") + time,
             QStringLiteral("[04] "));
    }
}

void TModelGate::TCore::relay(const QString& device, const QString& relay, int yesnot)
{
    if (yesnot != 0 && yesnot != 1) {
        hit<"relay neither on nor off">();
        return;
    }
    const bool switchesOn =
        yesnot == 1 && !either<"relay on, turnstile", "relay on, other">(channelOf(device) == u"A");
    if (yesnot == 0) {
        hit<"relay off">();
    }
    send(QStringLiteral("$") + device + relay + (switchesOn ? QStringLiteral("20") : QStringLiteral("00")),
         QStringLiteral("[04] "));
}

void TModelGate::TCore::poll()
{
    send(QStringLiteral("$000900"), QStringLiteral("[03] "));
}

void TModelGate::TCore::send(const QString& command, const QString& code)
{
    if (!port || !port->open) {
        either<"port not assigned", "port not open">(!port);
        echoedError(QStringLiteral("[04] ") + kNotOpen);
        return;
    }
    std::optional<QString> message;
    try {
        const QByteArray bytes = bytesOf(command + checksum(command) + QStringLiteral("\r"));
        const std::shared_ptr<TPort> to = port;
        host([&] {
            listener().writing(to->index);
            if (!to->writeFailure.isNull()) {
                throw TRaised(to->writeFailure);
            }
            listener().written(to->index, bytes);
        });
        hit<"written">();
    } catch (const TGone&) {
        throw;
    } catch (...) {
        either<"poll not written", "command not written">(code == u"[03] ");
        message = raisedText();
    }
    if (message) {
        echoedError(code + *message);
    }
    log(kSent + command);
    echo(QStringLiteral("LOG!") + kSent + command + QStringLiteral("&"));
}

QString TModelGate::TCore::checksum(const QString& command)
{
    int value = code(command, 1);
    const int tens = digit(command, 2);
    value ^= tens * 10 + digit(command, 3);
    value ^= code(command, 4);
    value ^= digit(command, 5);
    value ^= digit(command, 6);
    value ^= digit(command, 7);
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper();
}

} // namespace tnv5::turnstile::model
