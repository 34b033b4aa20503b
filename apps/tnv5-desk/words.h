#pragma once

#include "apps/tnv5-desk/desk_state.h"

#include <QCoreApplication>

namespace tnv5::desk {

/// Ending of a pass that was under way when the connection was lost; the host has no such word.
constexpr char kUnknownEnding[] = "?";

/// What the host says in its own words, in the language of the desk. A word that the desk does not know stays
/// as it is.
class TWords
{
    Q_DECLARE_TR_FUNCTIONS(tnv5::desk::TWords)

public:
    /// Why a card was refused, such as "expired".
    static QString reason(const QString& word);
    /// How a pass ended, such as "timed out".
    static QString ending(const QString& word);
    /// A stage of a payment, such as "the bank answers 00".
    static QString stage(const QString& text);
    /// What the connection to the host says, such as "No host answers at ...".
    static QString connection(const QString& text);
    /// @param sockets at which hosts answer
    static QString severalHosts(const QStringList& sockets);
    static QString way(TWay way);
    /// Example: "01A (hall, in)".
    static QString gate(const QString& address, const QString& zone, std::optional<TWay> way);
    /// Who passes: the name, the card, the exit button or whoever opened by hand.
    static QString holder(const TPassNews& pass);
    /// What came of it, such as "refused: expired".
    static QString outcome(const TPassNews& pass);
};

} // namespace tnv5::desk
