#pragma once

#include "model/kit/step.h"

namespace tnv5::panel::model {

/// What ini files and gates are made of in random scenarios.
class TWords
{
public:
    explicit TWords(modelkit::TDice& dice) : d(dice) {}

    QString address() const;
    QString caption() const;
    QString section() const;
    QByteArray file() const;

private:
    QString number() const;
    QString key() const;
    QString line() const;

    modelkit::TDice& d;
};

} // namespace tnv5::panel::model
