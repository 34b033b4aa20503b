// How a scale's model cuts and reads packets.

#include "model/scales_model.h"

#include <cstdlib>

namespace tnv5::scales::model {

namespace {

QString trimmed(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] <= QChar(32)) {
        ++begin;
    }
    while (end > begin && text[end - 1] <= QChar(32)) {
        --end;
    }
    return text.mid(begin, end - begin);
}

/// Characters first to last, counted from 1; those that the text lacks are left out.
QString characters(const QString& text, qsizetype first, qsizetype last)
{
    QString part;
    for (qsizetype at = first; at <= last && at <= text.size(); ++at) {
        part += text[at - 1];
    }
    return part;
}

struct TNumber
{
    bool valid = false;
    bool outOfRange = false;
    int value = 0;
};

TNumber numberOf(const QString& text)
{
    qsizetype at = 0;
    while (at < text.size() && text[at] == u' ') {
        ++at;
    }
    bool negative = false;
    if (at < text.size() && (text[at] == u'+' || text[at] == u'-')) {
        negative = text[at] == u'-';
        ++at;
    }
    if (at == text.size()) {
        return {};
    }
    qint64 value = 0;
    TNumber number;
    for (; at < text.size(); ++at) {
        if (text[at] < u'0' || text[at] > u'9') {
            return {};
        }
        value = qMin<qint64>(value * 10 + (text[at].unicode() - u'0'), 9'999'999'999);
    }
    value = negative ? -value : value;
    number.outOfRange = value < -2'147'483'648LL || value > 2'147'483'647LL;
    number.valid = !number.outOfRange;
    number.value = number.valid ? int(value) : 0;
    return number;
}

bool differs(int first, int second)
{
    return std::llabs(qint64(first) - second) >= 3;
}

} // namespace

// framing

void TScalesModel::findStart(const QByteArray& buffer, qsizetype& position)
{
    log(QStringLiteral("[01] Start read from port "));
    switch (FScalesType) {
    case 1:
        reach(TBranch::Start1);
        position = 1;
        break;
    case 2:
        reach(FAsk ? TBranch::Start2Ask : TBranch::Start2Hey);
        position = buffer.lastIndexOf(FAsk ? '\x01' : '\x06') + 1;
        break;
    case 3:
    case 4:
        reach(FScalesType == 3 ? TBranch::Start3 : TBranch::Start4);
        position = 1;
        break;
    case 6:
        reach(TBranch::Start6);
        position = buffer.lastIndexOf('B') + 1;
        break;
    case 7:
    case 8:
        reach(TBranch::Start78);
        position = -1;
        break;
    default:
        reach(FScalesType == 5 ? TBranch::Start5 : TBranch::StartNone);
    }
}

void TScalesModel::findStop(const QByteArray& buffer, qsizetype& position)
{
    log(QStringLiteral("[02] Stop read from port "));
    switch (FScalesType) {
    case 1:
        reach(TBranch::Stop1);
        position = buffer.size();
        break;
    case 2:
        reach(FAsk ? TBranch::Stop2Ask : TBranch::Stop2Hey);
        position = buffer.lastIndexOf(FAsk ? '\x04' : '\x06') + 1;
        break;
    case 3:
        reach(buffer.size() >= 18 ? TBranch::Stop3 : TBranch::Stop3Wait);
        position = buffer.size() >= 18 ? buffer.size() : 0;
        break;
    case 4:
        reach(buffer.size() >= 17 ? TBranch::Stop4 : TBranch::Stop4Wait);
        position = buffer.size() >= 17 ? buffer.size() : 0;
        break;
    case 6:
        position = buffer.lastIndexOf("\r\n") + 1;
        reach(position > 0 ? TBranch::Stop6 : TBranch::Stop6Wait);
        break;
    case 7:
    case 8:
        reach(TBranch::Stop78);
        position = -1;
        break;
    default:
        reach(FScalesType == 5 ? TBranch::Stop5 : TBranch::StopNone);
    }
}

// decoding

void TScalesModel::packet(const QByteArray& bytes)
{
    const QString text = QString::fromLatin1(bytes);
    FLastAsk = FClock.timeOfDay();
    log(QStringLiteral("[03] Get from port ") + text);
    const int type = FScalesType;
    if (type < 1 || type > 8) {
        reach(TBranch::PacketNone);
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
        reach(TBranch::Field3);
        log(QStringLiteral("Ask  ") + text);
    }
    if (type == 3 || type == 4) {
        reach(type == 4 ? TBranch::Field4 : TBranch::Field3);
        QString field;
        for (int at = 6; at >= 1; --at) {
            field += characters(text, at, at);
        }
        store(field);
    } else if (type == 5) {
        reach(TBranch::Field5);
        store(characters(text, 3, 7));
    } else if (type == 6) {
        reach(TBranch::Field6);
        store(digitsOnly(text));
    } else if (type == 7) {
        axis(text);
    } else {
        upaQ(text);
    }
}

void TScalesModel::massaK(const QByteArray& bytes)
{
    if (bytes.size() != 2) {
        reach(TBranch::MassaLength);
        return;
    }
    const int low = uchar(bytes[0]);
    const int high = uchar(bytes[1]);
    if (!FAsk) {
        if (low < 128) {
            reach(TBranch::MassaNotReady);
            return;
        }
        reach(TBranch::MassaReady);
        try {
            send(QStringLiteral("E"));
        } catch (const TFailure&) {
            reach(TBranch::MassaWriteFailed); // the step of the dialogue stays
            throw;
        }
        FAsk = true;
        FLastAsk = FClock.timeOfDay();
        return;
    }
    reach(TBranch::MassaWeight);
    const int weight = high * 256 + low;
    log(QString::number(FLastWeight) + u' ' + QString::number(weight));
    reach(differs(weight, FLastWeight) ? TBranch::MassaChange : TBranch::MassaSmall);
    notifyChange(weight);
}

void TScalesModel::notifyChange(int weight)
{
    if (differs(weight, FLastWeight)) {
        notify(weight);
    }
}

void TScalesModel::cas(const QByteArray& bytes)
{
    if (FAsk) {
        casWeight(bytes);
        return;
    }
    reach(TBranch::CasHandshake);
    FAsk = true;
    send(QString(QChar(0x11)));
    FLastAsk = FClock.timeOfDay();
}

void TScalesModel::casWeight(const QByteArray& bytes)
{
    const char status = bytes.size() > 2 ? bytes[2] : '\0';
    if (status == 'F') {
        reach(TBranch::CasOverload);
        error(message(1));
    }
    if (status != 'S' && status != 'U') {
        reach(TBranch::CasStatus);
        return;
    }
    if (bytes.size() > 3 && bytes[3] == '-') {
        reach(TBranch::CasNegative);
        error(message(2));
        return;
    }
    const QString digits = digitsOnly(QString::fromLatin1(bytes.mid(4, 6)));
    if (digits.isEmpty()) {
        reach(TBranch::CasBlank);
        return;
    }
    const int weight = numberOf(digits).value;
    reach(differs(weight, FLastWeight) ? TBranch::CasChange : TBranch::CasSmall);
    notifyChange(weight);
}

void TScalesModel::store(const QString& field)
{
    if (trimmed(field).isEmpty()) {
        reach(TBranch::FieldBlank);
        return;
    }
    log(field);
    const TNumber number = numberOf(field);
    if (!number.valid) {
        reach(number.outOfRange ? TBranch::FieldOutOfRange : TBranch::FieldNotNumber);
        throw TFailure{u'\'' + field + QStringLiteral("' is not a valid integer value")};
    }
    reach(number.value < 0 ? TBranch::FieldSigned : TBranch::FieldStored);
    FLastWeight = number.value;
    log(QString::number(number.value));
}

void TScalesModel::axis(const QString& text)
{
    const QString inner = trimmed(text);
    if (inner.size() != 15) {
        reach(TBranch::AxisLength);
        return;
    }
    const QString field = characters(inner, 5, 9);
    if (trimmed(field).isEmpty()) {
        reach(TBranch::AxisBlank);
        return;
    }
    log(field);
    const TNumber number = numberOf(field);
    reach(number.valid ? TBranch::AxisNumber : TBranch::AxisNotNumber);
    FLastWeight = number.value;
    log(text + u' ' + QString::number(number.value) + u'%');
}

void TScalesModel::upaQ(const QString& text)
{
    if (trimmed(text).isEmpty()) {
        reach(TBranch::UpaQBlank);
        return;
    }
    const QString digits = digitsOnly(text);
    const TNumber number = numberOf(digits);
    reach(digits.isEmpty()    ? TBranch::UpaQNoDigits
          : number.outOfRange ? TBranch::UpaQOutOfRange
                              : TBranch::UpaQNumber);
    FLastWeight = number.value;
    log(text + u' ' + QString::number(number.value) + u'%');
}

} // namespace tnv5::scales::model
