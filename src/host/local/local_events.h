#pragma once

#include "tnv5/host/card_payment.h"
#include "tnv5/host/club.h"
#include "tnv5/host/club/log_filter.h"
#include "tnv5/host/lamp.h"

#include <QJsonObject>

/// What the books hold, as the local socket tells it (docs/local-socket.md).
namespace tnv5::host {

/// A date-time of the host with its zone, to the millisecond; empty for 0.
/// Example: "2026-01-05T12:00:00.250+02:00".
QString isoTime(platform::TDateTime time);

/// @param zone of the pass's gate
QJsonObject toJson(const TPass& pass, const QString& zone);
QJsonObject toJson(const TSale& sale);
QJsonObject toJson(const TPayment& payment);
QJsonObject toJson(const TLampTime& time);

// The events, whole.
QJsonObject passEvent(const TPass& pass, const QString& zone);
QJsonObject saleEvent(const TSale& sale);
QJsonObject paymentEvent(const TPayment& payment);
QJsonObject lampTimeEvent(const TLampTime& time);
QJsonObject lineEvent(TLevel level, platform::TDateTime time, const QString& text);

} // namespace tnv5::host
