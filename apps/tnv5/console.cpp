#include "apps/tnv5/console.h"

#include <algorithm>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace tnv5::cli {

namespace {

constexpr char kClearLine[] = "\r\033[K";

QString& progress()
{
    static QString text;
    return text;
}

std::function<void(const QString& line, bool complaint)>& listener()
{
    static std::function<void(const QString& line, bool complaint)> one;
    return one;
}

bool& plain()
{
    static bool one = false;
    return one;
}

void write(std::FILE* file, const QString& text)
{
    std::fputs(qUtf8Printable(text), file);
    std::fflush(file);
}

QString inColour(const QString& line, TColour colour)
{
    static const char* const kCodes[] = {"", "31", "32", "33", "2"};
    return colour == TColour::Usual ? line
                                    : QStringLiteral("\033[%1m%2\033[0m")
                                          .arg(QLatin1String(kCodes[static_cast<int>(colour)]), line);
}

void writeLine(std::FILE* file, const QString& rawLine, TColour colour = TColour::Usual)
{
    if (listener()) {
        listener()(rawLine, file == stderr);
    }
    const QString line = inColour(harmless(rawLine), colour);
    if (progress().isEmpty()) {
        write(file, line + u'\n');
        return;
    }
    write(stdout, QString::fromLatin1(kClearLine));
    write(file, line + u'\n');
    write(stdout, progress());
}

bool takesMore(std::FILE* file)
{
    pollfd state = {fileno(file), POLLOUT, 0};
    return poll(&state, 1, 0) == 1 && (state.revents & POLLOUT) != 0;
}

void writeLineNow(std::FILE* file, const QString& line)
{
    static qint64 leftOut = 0;
    if (!takesMore(file) || !takesMore(stdout)) { // the progress goes to standard output
        ++leftOut;
        return;
    }
    if (leftOut > 0) {
        writeLine(file, QStringLiteral("(%1 lines were left out: nobody took them)").arg(leftOut));
        leftOut = 0;
    }
    writeLine(file, line);
}

} // namespace

// What came from a wire or a file must not command a terminal.
QString harmless(const QString& line)
{
    QString text;
    for (const QChar character : line) {
        if (character.category() == QChar::Other_Control) {
            text += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QChar(u'0'));
        } else {
            text += character;
        }
    }
    return text;
}

void print(const QString& line)
{
    writeLine(stdout, line);
}

void print(const QString& line, TColour colour)
{
    writeLine(stdout, line, colour);
}

bool coloured()
{
    return !plain() && onTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

void setPlain()
{
    plain() = true;
}

void complain(const QString& line)
{
    writeLine(stderr, line);
}

void draw(const QStringList& lines)
{
    for (const QString& line : lines) {
        write(stdout, line + u'\n');
    }
}

void printNow(const QString& line)
{
    writeLineNow(stdout, line);
}

void complainNow(const QString& line)
{
    writeLineNow(stderr, line);
}

void overhear(std::function<void(const QString& line, bool complaint)> one)
{
    listener() = std::move(one);
}

bool onTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

void showProgress(const QString& text)
{
    if (text != progress()) {
        progress() = text;
        write(stdout, QString::fromLatin1(kClearLine) + text);
    }
}

QString progressBar(double fraction)
{
    constexpr int kWidth = 20;
    const int done = std::clamp(static_cast<int>(fraction * kWidth), 0, kWidth);
    return u'[' + QString(done, u'#') + QString(kWidth - done, u'-') + u']';
}

} // namespace tnv5::cli
