#include "apps/tnv5-desk/words.h"

#include <QRegularExpression>
#include <array>

namespace tnv5::desk {

namespace {

struct TWord
{
    const char* host;
    const char* shown;
};

// The words of the journal.
constexpr std::array kReasons = {
    TWord{"unknown gate", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "unknown gate")},
    TWord{"unknown card", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "unknown card")},
    TWord{"suspended", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "suspended")},
    TWord{"no membership", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "no membership")},
    TWord{"not yet valid", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "not yet valid")},
    TWord{"expired", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "expired")},
    TWord{"wrong zone", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "wrong zone")},
    TWord{"already inside", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "already inside")},
    TWord{"host fault", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the host could not find out")},
};

constexpr std::array kEndings = {
    TWord{"passed", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "passed")},
    TWord{"timed out", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "nobody passed")},
    TWord{"unanswered", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the gate did not answer")},
    TWord{"interrupted", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the host was ended")},
    TWord{"abandoned", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the host was killed")},
    TWord{kUnknownEnding, QT_TRANSLATE_NOOP("tnv5::desk::TWords", "not known, the connection was lost")},
};

// Beginnings of what the payment says of its steps; what follows stays.
constexpr std::array kStages = {
    TWord{"waits for the terminal", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "waits for the terminal")},
    TWord{"waiting until the terminal asks",
          QT_TRANSLATE_NOOP("tnv5::desk::TWords", "waits for the terminal")},
    TWord{"the amount ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the amount goes to the terminal")},
    TWord{"card ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the card was read, the bank is asked")},
    TWord{"the bank answers ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the bank has answered")},
};

// What is said of the connection; %1 and %2 stand for what is in it.
constexpr std::array kConnection = {
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "No host answers at %1: %2"),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "The host at %1 has not answered for %2 seconds."),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "The connection to the host is lost."),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "What came from %1 is not from a host."),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "Too many programs are connected to this host."),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "there is no such socket"),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the host that listened there has ended"),
    QT_TRANSLATE_NOOP("tnv5::desk::TWords", "permission denied"),
};

/// What stands in a text for %1 and %2; none: it is another text.
std::optional<QStringList> placesIn(const QString& text, const char* pattern)
{
    QString expression = QRegularExpression::escape(QLatin1String(pattern));
    for (const char* const place : {"\\%1", "\\%2"}) {
        expression.replace(QLatin1String(place), QStringLiteral("(.*)"));
    }
    const QRegularExpression whole(QRegularExpression::anchoredPattern(expression),
                                   QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = whole.match(text);
    return match.hasMatch() ? std::optional(match.capturedTexts().mid(1)) : std::nullopt;
}

template <std::size_t Size>
QString translated(const std::array<TWord, Size>& list, const QString& word)
{
    for (const TWord& each : list) {
        if (word == QLatin1String(each.host)) {
            return TWords::tr(each.shown);
        }
    }
    return word;
}

} // namespace

QString TWords::reason(const QString& word)
{
    return translated(kReasons, word);
}

QString TWords::ending(const QString& word)
{
    return translated(kEndings, word);
}

QString TWords::stage(const QString& text)
{
    for (const TWord& each : kStages) {
        if (text.startsWith(QLatin1String(each.host))) {
            return tr(each.shown);
        }
    }
    return text;
}

QString TWords::connection(const QString& text)
{
    for (const char* const pattern : kConnection) {
        if (const auto places = placesIn(text, pattern)) {
            return places->isEmpty()     ? tr(pattern)
                   : places->size() == 1 ? tr(pattern).arg(places->first())
                                         : tr(pattern).arg(places->first(), connection(places->last()));
        }
    }
    return text;
}

QString TWords::severalHosts(const QStringList& sockets)
{
    return tr("Several hosts are here, choose one with --socket:") + QStringLiteral("\n  ") +
           sockets.join(QStringLiteral("\n  "));
}

QString TWords::way(TWay way)
{
    switch (way) {
    case TWay::In:
        return tr("in");
    case TWay::Out:
        return tr("out");
    case TWay::Inner:
        break;
    }
    return tr("door");
}

QString TWords::gate(const QString& address, const QString& zone, std::optional<TWay> way)
{
    if (zone.isEmpty()) {
        return address;
    }
    return way ? QStringLiteral("%1 (%2, %3)").arg(address, zone, TWords::way(*way))
               : QStringLiteral("%1 (%2)").arg(address, zone);
}

QString TWords::holder(const TPassNews& pass)
{
    if (pass.byButton()) {
        return tr("exit button");
    }
    if (pass.byHand()) {
        return pass.who.isEmpty() ? tr("opened by hand") : tr("opened by hand: %1").arg(pass.who);
    }
    return pass.name.isEmpty() ? tr("card %1").arg(pass.card) : pass.name;
}

QString TWords::outcome(const TPassNews& pass)
{
    if (!pass.opened) {
        return tr("refused: %1").arg(reason(pass.reason));
    }
    const QString result = pass.ending.isEmpty() ? tr("may pass") : ending(pass.ending);
    return pass.note.isEmpty() ? result : QStringLiteral("%1 (%2)").arg(result, pass.note);
}

} // namespace tnv5::desk
