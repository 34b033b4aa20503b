#include "tnv5/bank/bank_frame.h"

#include "tnv5/common/string_lrc.h"
#include "tnv5/common/text.h"

#include <algorithm>

namespace tnv5::bank {

namespace {

constexpr qsizetype kLookedAt = 1000;
constexpr qsizetype kAmountWidth = 12;

bool holds(QStringView packet, QStringView part)
{
    return packet.contains(part);
}

QString withCheck(const QString& body)
{
    return QChar(kStx) + body + QChar(common::StringLRC(body));
}

} // namespace

qsizetype frameStart(const QByteArray& buffer)
{
    return buffer.lastIndexOf(char(kStx)) + 1;
}

qsizetype frameEnd(const QByteArray& buffer)
{
    const qsizetype etx = buffer.lastIndexOf(char(kEtx)) + 1;
    const qsizetype eot = buffer.lastIndexOf(char(kEot)) + 1;
    if (eot > etx) {
        return eot;
    }
    if (etx == 0) {
        return 0;
    }
    if (etx < buffer.size()) {
        return etx + 1;
    }
    const bool isCheckByte = buffer.indexOf(char(kEtx)) + 1 < etx;
    return isCheckByte ? etx : 0;
}

bool isSound(QStringView packet)
{
    const qsizetype etx = packet.indexOf(QChar(kEtx)) + 1;
    if (etx == 0 || packet.size() != etx + 1) {
        return false;
    }
    const int check = common::StringLRC(common::Copy(packet, 2, etx - 1));
    return packet.back() == QChar(check);
}

TPacketKind kindOf(QStringView packet)
{
    static const QString request = QString(QChar(kStx)) + QChar(kEnq) + QChar(kEtx);
    if (holds(packet, request)) {
        return TPacketKind::AmountRequest;
    }
    if (holds(packet, kTagCardNo) && holds(packet, kTagAnswer)) {
        return TPacketKind::Answer;
    }
    if (holds(packet, kTagCardNo) && holds(packet, kTagOperation) && holds(packet, kTagBankType)) {
        return TPacketKind::CardRead;
    }
    return packet.contains(QChar(kEot)) ? TPacketKind::EndOfDialogue : TPacketKind::Unknown;
}

QString valueOf(QStringView packet, QStringView tag)
{
    const qsizetype at = common::Pos(tag, packet);
    if (at == 0) {
        return {};
    }
    const QStringView looked = common::Copy(packet, at + tag.size(), kLookedAt);
    const auto end = std::find_if(looked.begin(), looked.end(),
                                  [](QChar character) { return character == kFs || character == kEtx; });
    return looked.first(end - looked.begin()).toString();
}

QString padded(qint64 amount)
{
    return QString::number(amount).rightJustified(kAmountWidth, u'0');
}

QString amountFrame(int amount, int discount)
{
    QString body = kTagAmount + padded(amount);
    if (discount > 0) {
        body += QChar(kFs) + kTagDiscountSent + padded(discount);
    }
    return withCheck(body + QChar(kEtx));
}

} // namespace tnv5::bank
