#pragma once

#include "model/kit/step.h"

#include <functional>

namespace tnv5::modelkit {

/// What comes over a controller's sockets, right and nearly right.
struct TRemoteWords
{
    TDice& dice;
    std::function<QString()> line; ///< of a controller
    bool server = false;           ///< the server's socket is open
    bool linked = false;           ///< the client's socket is connected
    int clients = 0;               ///< that have come to the server
    int present = 0;               ///< of them

    TStep any();

private:
    int client() { return dice.chance(85) ? clients - 1 - dice.below(4) : dice.below(clients); }
    int code() { return dice.pick({104, 111, 10054, 1, 0, -1}); }
    TStep ofServer();
    TStep ofClient();
    QByteArray linesOfAClient();
    QString letters(int count) { return {count, dice.pick({u'x', u'!', u'я', u'x'})}; }
    QString status();
    QString text();
    QString rubbish();
    QString atALimit();
    QByteArray stream();
};

} // namespace tnv5::modelkit
