// How a scale's model cuts and reads packets.

#include "model/kit/texts.h"
#include "model/scales_model.h"

#include <cstdlib>

namespace tnv5::scales::model {

namespace {

bool differs(int first, int second)
{
    return std::llabs(qint64(first) - second) >= 3;
}

} // namespace

// framing

void TModelScales::findStart(const QByteArray& buffer, qsizetype& position)
{
    log("[01] Start read from port ");
    switch (FType) {
    case 1:
        hit<"Start1">();
        position = 1;
        break;
    case 2:
        either<"Start2Ask", "Start2Hey">(FAsk);
        position = buffer.lastIndexOf(FAsk ? '\x01' : '\x06') + 1;
        break;
    case 3:
    case 4:
        either<"Start3", "Start4">(FType == 3);
        position = 1;
        break;
    case 6:
        hit<"Start6">();
        position = buffer.lastIndexOf('B') + 1;
        break;
    case 7:
    case 8:
        hit<"Start78">();
        position = -1;
        break;
    default:
        either<"Start5", "StartNone">(FType == 5);
    }
}

void TModelScales::findStop(const QByteArray& buffer, qsizetype& position)
{
    log("[02] Stop read from port ");
    switch (FType) {
    case 1:
        hit<"Stop1">();
        position = buffer.size();
        break;
    case 2:
        either<"Stop2Ask", "Stop2Hey">(FAsk);
        position = buffer.lastIndexOf(FAsk ? '\x04' : '\x06') + 1;
        break;
    case 3:
    case 4: {
        const bool whole = buffer.size() >= (FType == 3 ? 18 : 17);
        way<"Stop3Wait", "Stop3", "Stop4Wait", "Stop4">(2 * (FType - 3) + int(whole));
        position = whole ? buffer.size() : 0;
        break;
    }
    case 6:
        position = buffer.lastIndexOf("\r\n") + 1;
        either<"Stop6", "Stop6Wait">(position > 0);
        break;
    case 7:
    case 8:
        hit<"Stop78">();
        position = -1;
        break;
    default:
        either<"Stop5", "StopNone">(FType == 5);
    }
}

// decoding

void TModelScales::packet(const QByteArray& bytes)
{
    const QString text = QString::fromLatin1(bytes);
    FLastAsk = FWorld.clock.timeOfDay();
    log("[03] Get from port " + text);
    const int type = FType;
    if (type < 1 || type > 8) {
        hit<"PacketNone">();
        return;
    }
    if (type == 1) {
        massaK(bytes);
        return;
    }
    if (type == 2) {
        cas(bytes);
        return;
    }
    FAsk = true;
    if (type == 3) {
        hit<"Field3">();
        log("Ask  " + text);
    }
    if (type == 3 || type == 4) {
        either<"Field4", "Field3">(type == 4);
        QString field;
        for (int at = 6; at >= 1; --at) {
            field += part(text, at, 1);
        }
        store(field);
    } else if (type == 5) {
        hit<"Field5">();
        store(part(text, 3, 5));
    } else if (type == 6) {
        hit<"Field6">();
        store(DigitsOnly(text));
    } else if (type == 7) {
        axis(text);
    } else {
        upaQ(text);
    }
}

void TModelScales::massaK(const QByteArray& bytes)
{
    if (bytes.size() != 2) {
        hit<"MassaLength">();
        return;
    }
    const int low = uchar(bytes[0]);
    const int high = uchar(bytes[1]);
    if (!FAsk) {
        if (low < 128) {
            hit<"MassaNotReady">();
            return;
        }
        hit<"MassaReady">();
        try {
            send("E");
        } catch (const TFailure&) {
            hit<"MassaWriteFailed">(); // the step of the dialogue stays
            throw;
        }
        FAsk = true;
        FLastAsk = FWorld.clock.timeOfDay();
        return;
    }
    hit<"MassaWeight">();
    const int weight = high * 256 + low;
    log(QString::number(FLastWeight) + u' ' + QString::number(weight));
    either<"MassaChange", "MassaSmall">(differs(weight, FLastWeight));
    notifyChange(weight);
}

void TModelScales::notifyChange(int weight)
{
    if (differs(weight, FLastWeight)) {
        notify(weight);
    }
}

void TModelScales::cas(const QByteArray& bytes)
{
    if (FAsk) {
        casWeight(bytes);
        return;
    }
    hit<"CasHandshake">();
    FAsk = true;
    send(QString(QChar(0x11)));
    FLastAsk = FWorld.clock.timeOfDay();
}

void TModelScales::casWeight(const QByteArray& bytes)
{
    const char status = bytes.size() > 2 ? bytes[2] : '\0';
    if (status == 'F') {
        hit<"CasOverload">();
        error(GetMessage(1));
    }
    if (status != 'S' && status != 'U') {
        hit<"CasStatus">();
        return;
    }
    if (bytes.size() > 3 && bytes[3] == '-') {
        hit<"CasNegative">();
        error(GetMessage(2));
        return;
    }
    const QString digits = DigitsOnly(QString::fromLatin1(bytes.mid(4, 6)));
    if (digits.isEmpty()) {
        hit<"CasBlank">();
        return;
    }
    const int weight = numberOf(digits).value;
    either<"CasChange", "CasSmall">(differs(weight, FLastWeight));
    notifyChange(weight);
}

void TModelScales::store(const QString& field)
{
    if (trimmed(field).isEmpty()) {
        hit<"FieldBlank">();
        return;
    }
    log(field);
    const TNumber number = numberOf(field);
    if (!number.valid) {
        either<"FieldOutOfRange", "FieldNotNumber">(number.outOfRange);
        throw TFailure{"'" + field + "' is not a valid integer value"};
    }
    either<"FieldSigned", "FieldStored">(number.value < 0);
    FLastWeight = number.value;
    log(QString::number(number.value));
}

void TModelScales::axis(const QString& text)
{
    const QString inner = trimmed(text);
    if (inner.size() != 15) {
        hit<"AxisLength">();
        return;
    }
    const QString field = part(inner, 5, 5);
    if (trimmed(field).isEmpty()) {
        hit<"AxisBlank">();
        return;
    }
    log(field);
    const TNumber number = numberOf(field);
    either<"AxisNumber", "AxisNotNumber">(number.valid);
    FLastWeight = number.value;
    log(text + u' ' + QString::number(number.value) + u'%');
}

void TModelScales::upaQ(const QString& text)
{
    if (trimmed(text).isEmpty()) {
        hit<"UpaQBlank">();
        return;
    }
    const QString digits = DigitsOnly(text);
    const TNumber number = numberOf(digits);
    way<"UpaQNumber", "UpaQOutOfRange", "UpaQNoDigits">(digits.isEmpty() ? 2 : int(number.outOfRange));
    FLastWeight = number.value;
    log(text + u' ' + QString::number(number.value) + u'%');
}

} // namespace tnv5::scales::model
