#include "apps/tnv5-desk/words.h"

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
    TWord{"the amount ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the amount goes to the terminal")},
    TWord{"card ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the card was read, the bank is asked")},
    TWord{"the bank answers ", QT_TRANSLATE_NOOP("tnv5::desk::TWords", "the bank has answered")},
};

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
