#pragma once

#include "tnv5/host/local/club_control.h"

namespace tnv5::host {

/// Most passes that one answer gives, and how many it gives when nothing is said.
constexpr int kMaxJournalRows = 1'000;
constexpr int kUsualJournalRows = 100;
/// Characters of who opened a gate by hand, and of why; the rest is cut off.
constexpr int kMaxNote = 200;

/// What a request to a running club is answered, without its "id". "watch" is answered here, too, but what
/// follows from it is the connection's business.
/// @param user who asks, by the system's word
/// @throws what the club throws
QJsonObject answerTo(IClubControl& club, const QJsonObject& request, const QString& user);

/// An answer that something was not done.
QJsonObject refusal(const QString& why);

/// Who did something, for the journal: what the request says, and the user that the system names.
/// Example: "Anna" and "desk1" give "Anna (desk1)"; "" and "desk1" give "desk1".
QString whoDid(const QString& who, const QString& user);

} // namespace tnv5::host
