#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <algorithm>

/// Texts as the models cut and read them, told apart from the module's own. Positions count from 1; 0: none.
namespace tnv5::modelkit {

constexpr qint64 kMsPerDay = 86'400'000;
constexpr qint64 kToday = 46'027 * kMsPerDay; // 2026-01-05

/// `count` characters from `from` on, those that the text has.
QString part(const QString& text, qsizetype from, qsizetype count);
QString rest(const QString& text, qsizetype from);
qsizetype position(const QString& what, const QString& text);
bool holds(const QString& text, const char* what);
/// Without characters up to the blank at both ends.
QString trimmed(const QString& text);

struct TNumber
{
    bool valid = false;
    bool outOfRange = false;
    int value = 0;
};
/// Blanks, perhaps a sign, digits.
TNumber numberOf(const QString& text);
/// What a host answered, as a whole number. @throws TFailure when it is none
int integerOf(const QVariant& answer);

/// Windows-1251, or ISO 8859-1.
QString textOf(const QByteArray& bytes, bool cyrillic = true);
/// A character that the code page lacks becomes "?".
QByteArray bytesOf(const QString& text, bool cyrillic = true);

/// Index of the first thing in a list that is so; -1: none.
template <class List, class Is>
int firstIndex(const List& list, const Is& is)
{
    const auto found = std::find_if(list.begin(), list.end(), is);
    return found == list.end() ? -1 : int(found - list.begin());
}

/// True when more than `limit` whole seconds lie between two moments.
bool apart(qint64 firstMs, qint64 secondMs, qint64 limit);
/// The same for moments in days, which hold a whole second up to a few microseconds.
bool daysApart(double first, double second, qint64 limit);

} // namespace tnv5::modelkit
