#include "tnv5/host/local/local_request.h"

#include "tnv5/host/local/local_texts.h"

#include <algorithm>
#include <array>

namespace tnv5::host {

namespace {

using TAnswer = QJsonObject (*)(IClubControl& club, const QJsonObject& request, const QString& user);

struct TDoing
{
    const char* name;
    TAnswer answer;
};

QJsonObject done(QJsonObject more = {})
{
    more.insert(u"ok", true);
    return more;
}

QJsonObject doneUnless(const QString& why)
{
    return why.isEmpty() ? done() : refusal(why);
}

QString textOf(const QJsonObject& request, QStringView name)
{
    return request.value(name).toString().trimmed();
}

/// What goes into the journal: in one line, and no longer than anybody reads.
QString noteOf(const QJsonObject& request, QStringView name)
{
    QString note = textOf(request, name).simplified().left(kMaxNote);
    if (!note.isEmpty() && note.back().isHighSurrogate()) { // half a character
        note.chop(1);
    }
    return note;
}

QJsonObject status(IClubControl& club, const QJsonObject&, const QString&)
{
    return done({{QStringLiteral("state"), club.state()}});
}

QJsonObject open(IClubControl& club, const QJsonObject& request, const QString& user)
{
    const QString gate = textOf(request, u"gate");
    const QString reason = noteOf(request, u"reason");
    if (gate.isEmpty()) {
        return refusal(local_texts::kNoGate);
    }
    if (reason.isEmpty()) {
        return refusal(local_texts::kNoReason);
    }
    return doneUnless(club.open(gate, whoDid(noteOf(request, u"who"), user), reason));
}

QJsonObject reload(IClubControl& club, const QJsonObject&, const QString&)
{
    return doneUnless(club.reload());
}

QJsonObject watch(IClubControl&, const QJsonObject&, const QString&)
{
    return done();
}

QJsonObject picture(IClubControl& club, const QJsonObject& request, const QString&)
{
    const QString card = textOf(request, u"card");
    if (card.isEmpty()) {
        return refusal(local_texts::kNoCard);
    }
    return done({{QStringLiteral("png"), QString::fromLatin1(club.picture(card).toBase64())}});
}

QJsonObject journal(IClubControl& club, const QJsonObject& request, const QString&)
{
    const qint64 after = std::max<qint64>(request.value(u"after").toInteger(), 0);
    const qint64 limit = request.value(u"limit").toInteger(kUsualJournalRows);
    const int rows = static_cast<int>(std::clamp<qint64>(limit, 1, kMaxJournalRows));
    return done({{QStringLiteral("passes"), club.journal(after, rows)}});
}

QJsonObject sell(IClubControl& club, const QJsonObject& request, const QString&)
{
    const QString card = textOf(request, u"card");
    if (request.contains(u"scale")) {
        return doneUnless(club.sellGoods(textOf(request, u"scale"), card, textOf(request, u"product")));
    }
    if (request.contains(u"lamp")) {
        return doneUnless(club.sellTime(textOf(request, u"lamp"), card, request.value(u"minutes").toInt()));
    }
    if (request.contains(u"terminal")) {
        return doneUnless(club.sellAmount(textOf(request, u"terminal"), request.value(u"cents").toInteger()));
    }
    return refusal(local_texts::kNothingToSell);
}

QJsonObject cancel(IClubControl& club, const QJsonObject& request, const QString&)
{
    return doneUnless(club.cancelSale(textOf(request, u"device")));
}

constexpr std::array kDoings = {
    TDoing{"status", status}, TDoing{"open", open},       TDoing{"reload", reload},
    TDoing{"watch", watch},   TDoing{"picture", picture}, TDoing{"journal", journal},
    TDoing{"sell", sell},     TDoing{"cancel", cancel},
};

} // namespace

QJsonObject answerTo(IClubControl& club, const QJsonObject& request, const QString& user)
{
    const QString what = request.value(u"do").toString();
    const auto* const doing = std::find_if(kDoings.begin(), kDoings.end(), [&what](const TDoing& each) {
        return what == QLatin1String(each.name);
    });
    return doing == kDoings.end() ? refusal(local_texts::kUnknown.arg(what.left(40)))
                                  : doing->answer(club, request, user);
}

QJsonObject refusal(const QString& why)
{
    return {{QStringLiteral("ok"), false}, {QStringLiteral("error"), why}};
}

QString whoDid(const QString& who, const QString& user)
{
    const QString said = who.simplified();
    if (said.isEmpty() || said == user) {
        return user;
    }
    return user.isEmpty() ? said : QStringLiteral("%1 (%2)").arg(said, user);
}

} // namespace tnv5::host
