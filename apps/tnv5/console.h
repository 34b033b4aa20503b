#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace tnv5::cli {

/// Writes one line to standard output at once. Control characters are shown as "\x1b", here and below.
void print(const QString& line);
/// Writes one line to standard error.
void complain(const QString& line);

enum class TColour { Usual, Red, Green, Yellow, Faint };

/// Writes one line in a colour to standard output, where `coloured` says so.
void print(const QString& line, TColour colour);
/// Whether a person looks at standard output who has nothing against colours (NO_COLOR, --plain), on a
/// terminal that has them (TERM).
bool coloured();
/// No colours from now on: --plain.
void setPlain();

/// Writes lines of our own making, with their colours, to standard output.
void draw(const QStringList& lines);

/// The same without ever waiting, for what is written while gates are at work: a terminal that somebody has
/// stopped must not stop the gates. What nobody takes is left out, and how much is told later.
void printNow(const QString& line);
void complainNow(const QString& line);
/// At the end, when no gate waits any more: these two wait from now on, so long altogether.
void bePatient(int ms);

/// Somebody else hears every line, too, as it was given; nobody: none.
void overhear(std::function<void(const QString& line, bool complaint)> listener);

/// Whether a person looks at standard output.
bool onTerminal();

/// Shows how far something is in the last line of a terminal; the lines of `print` go above it. An empty text
/// takes it away.
void showProgress(const QString& text);

/// A bar for `showProgress`, such as "[######--------------]".
QString progressBar(double fraction);

} // namespace tnv5::cli
