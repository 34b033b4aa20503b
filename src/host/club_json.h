#pragma once

#include "tnv5/host/club_log.h"
#include "tnv5/host/database.h"
#include "tnv5/host/lamp.h"

#include <QJsonObject>

/// What a running club tells those who watch, as docs/local-socket.md has it.
namespace tnv5::host {

/// A pass; zone and direction are those of the gate, if it is known.
QJsonObject passJson(const TPass& pass, const std::optional<TGate>& gate);
QJsonObject passEvent(const QJsonObject& pass);
QJsonObject lineEvent(const TLogLine& line);
QJsonObject saleJson(const TSale& sale);
QJsonObject paymentJson(const TPayment& payment);
QJsonObject lampTimeJson(const TLampTime& time);

/// A date-time with its zone; empty for 0. Example: "2026-11-22T09:12:33.123+01:00".
QString isoText(platform::TDateTime time);

} // namespace tnv5::host
