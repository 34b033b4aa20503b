#pragma once

#include <QByteArray>
#include <QString>
#include <initializer_list>
#include <random>

namespace tnv5::connector::model {

/// Random numbers that are the same everywhere: the standard distributions are not.
class TDice
{
public:
    explicit TDice(quint64 seed) : FEngine(seed) {}

    int below(int limit) { return limit <= 0 ? 0 : int(FEngine() % quint64(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool chance(int percent) { return below(100) < percent; }

    template <class Value>
    Value pick(std::initializer_list<Value> values)
    {
        return *(values.begin() + below(int(values.size())));
    }
    // numbers of different widths in one list
    qint64 pick(std::initializer_list<qint64> values) { return pick<qint64>(values); }

private:
    std::mt19937_64 FEngine;
};

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
    QByteArray noise(int length);

    TDice& FDice;
};

} // namespace tnv5::connector::model
