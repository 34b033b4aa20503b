#pragma once

#include <QByteArray>
#include <QString>
#include <initializer_list>
#include <random>

namespace tnv5::scales::model {

/// Numbers by chance, the same on every machine.
class TRandom
{
public:
    explicit TRandom(quint64 seed) : FEngine(seed) {}
    int below(int limit) { return int(FEngine() % quint64(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool chance(int percent) { return below(100) < percent; }
    bool permille(int parts) { return below(1000) < parts; }
    template <class Item>
    Item pick(std::initializer_list<Item> items)
    {
        return items.begin()[below(int(items.size()))];
    }

private:
    std::mt19937_64 FEngine;
};

/// What a scale of a family sends: proper packets, near misses, noise.
/// @param asked the last request was the second one of a dialogue
QByteArray sampleBytes(TRandom& random, int type, bool asked, int lastWeight);

/// A text with characters from everywhere.
QString sampleText(TRandom& random);

} // namespace tnv5::scales::model
