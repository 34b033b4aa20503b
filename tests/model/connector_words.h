#pragma once

#include "model/kit/step.h"

namespace tnv5::connector::model {

using namespace modelkit;

/// What boards and hosts say, right and nearly right.
class TWords
{
public:
    explicit TWords(TDice& dice) : FDice(dice) {}

    QString ip();
    QString address();
    /// A line of a board as a host may hand it to a connector, start character included.
    QString hostLine();
    /// A short command.
    QString command();
    QString displayCommand();
    /// A text and a key to look for in it.
    void diagnostic(QString& text, QString& key);
    /// Bytes as they come from a line: a line with its end, noise, half a line.
    QByteArray stretchOfWire();

private:
    QByteArray boardLine();
    QByteArray dollarBody();
    QByteArray hashBody();
    QByteArray hardwareReply();
    QByteArray displayType();
    QString displayField();
    QByteArray damaged(QByteArray line);
    QByteArray noise(int longest) { return FDice.noise(longest, QByteArray("$#\r\nx/=N \0", 10)); }

    TDice& FDice;
};

} // namespace tnv5::connector::model
