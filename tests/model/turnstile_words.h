#pragma once

#include "model/kit/step.h"

namespace tnv5::turnstile::model {

using namespace modelkit;

/// What controllers and hosts say: addresses, cards, lines, streams; right and nearly right.
struct TWords
{
    TDice& dice;
    QStringList pending; ///< addresses that have a record

    QString address();
    QString oddAddress();
    QString card();
    QString status();
    QString line();
    QByteArray stream();
    QVariant answer(int mode);

private:
    QString event();
    QString message();
};

} // namespace tnv5::turnstile::model
