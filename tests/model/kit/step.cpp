#include "model/kit/step.h"

#include <QHash>
#include <numeric>

namespace tnv5::modelkit {

quint64 TDice::next()
{
    FState += 0x9E3779B97F4A7C15U;
    quint64 mixed = (FState ^ (FState >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
}

int TDice::weighted(std::initializer_list<int> weights)
{
    int left = below(std::accumulate(weights.begin(), weights.end(), 0));
    int index = 0;
    while (left >= weights.begin()[index]) {
        left -= weights.begin()[index++];
    }
    return index;
}

QByteArray TDice::noise(int longest, const QByteArray& likely)
{
    QByteArray bytes;
    for (int left = below(longest + 1); left > 0; --left) {
        bytes += chance(50) ? likely[below(int(likely.size()))] : char(below(256));
    }
    return bytes;
}

TStep fed(TDice& dice, int port, const QByteArray& bytes)
{
    TStep step{Feed, {}, port};
    step.bytes = bytes;
    if (dice.chance(40)) {
        step.cuts = randomCuts(dice, bytes.size());
    }
    return step;
}

std::vector<int> randomCuts(TDice& dice, qsizetype size)
{
    std::vector<int> cuts;
    const int largest = dice.pick({1, 2, 5, 17, 100'000});
    for (qsizetype at = 0; at < size && cuts.size() < 40; at += cuts.back()) {
        cuts.push_back(dice.chance(4) ? 0 : dice.between(1, int(qMin<qsizetype>(largest, size))));
    }
    return cuts;
}

QString shown(std::initializer_list<qint64> numbers)
{
    QStringList texts;
    for (const qint64 number : numbers) {
        texts += QString::number(number);
    }
    return texts.join(u' ');
}

QString shown(const QString& text)
{
    constexpr qsizetype kLongest = 300;
    QString plain = "'";
    for (const QChar character : QStringView(text).left(kLongest)) {
        const int code = character.unicode();
        const bool control = code < 32 || (code >= 127 && code <= 160) || character.isSurrogate();
        plain += control ? QStringLiteral("<%1>").arg(code) : QString(character);
    }
    plain += u'\'';
    return text.size() <= kLongest
               ? plain
               : plain + QStringLiteral(" of %1, hash %2").arg(text.size()).arg(qHash(text, 0));
}

QString shown(const QByteArray& bytes)
{
    return shown(QString::fromLatin1(bytes));
}

QString shown(const TStep& step, const char* names)
{
    static const char* const kGround = "Feed, Advance, Jump, OpenPort, ClosePort, Fail, PortError, NewPort, "
                                       "DestroyPort, RenewPort, Raise, Visit, Leave, Say, Deaf, ClientError, "
                                       "Told, Answered, LinkError, HangUp";
    const QString list = step.kind >= Feed ? kGround : names;
    QString line = list.split(u',').at(step.kind % Feed).trimmed();
    line += u' ' + shown({step.a, step.b, step.c});
    for (const QString& text : step.text) {
        line += u' ' + shown(text);
    }
    if (!step.bytes.isEmpty()) {
        line += u' ' + shown(step.bytes);
    }
    for (const int size : step.cuts) {
        line += QStringLiteral(" /%1").arg(size);
    }
    for (const TStep& inside : step.first) {
        line += " { " + shown(inside, names) + " }";
    }
    return line + (step.acts == 0 ? ", calm" : "");
}

} // namespace tnv5::modelkit
