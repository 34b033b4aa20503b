#include "tnv5/turnstile/line.h"

#include "tnv5/common/text.h"

namespace tnv5::turnstile {

using common::Copy;
using common::CopyFrom;

namespace {

constexpr qsizetype kAddressAt = 2;
constexpr qsizetype kAddressLength = 3;
constexpr QStringView kRelay = u"Relay";

bool sameText(QStringView first, QStringView second)
{
    return first.compare(second, Qt::CaseInsensitive) == 0;
}

} // namespace

TEventLine parseEvent(QStringView line)
{
    return {Copy(line, kAddressAt, kAddressLength), Copy(line, 5, 1), CopyFrom(line, 6)};
}

TMessageLine parseMessage(QStringView line)
{
    return {Copy(line, kAddressAt, kAddressLength), CopyFrom(line, 5)};
}

bool isMessage(QStringView text, TMessageForm form)
{
    switch (form) {
    case TMessageForm::HardReset:
        return sameText(text, u"HardReset");
    case TMessageForm::WaitCard:
        return sameText(text, u"Wait-Card");
    case TMessageForm::Relay:
        return sameText(Copy(text, 1, kRelay.size()), kRelay);
    case TMessageForm::CrcError:
        return sameText(text, u"CRC-ERROR");
    case TMessageForm::GateOpen:
        return sameText(text, u"Gate-Open");
    case TMessageForm::ButtonActive:
        return sameText(text, u"Btn-Activ");
    case TMessageForm::InGateActive:
        return sameText(text, u"InG-Activ");
    }
    return false;
}

QStringView channelOf(QStringView address)
{
    return Copy(address, 3, 1);
}

bool isTurnstileChannel(QStringView address)
{
    return channelOf(address) == u"A";
}

} // namespace tnv5::turnstile
