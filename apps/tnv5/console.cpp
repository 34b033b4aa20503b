#include "apps/tnv5/console.h"

#include "tnv5/host/now_output.h"
#include "tnv5/host/shown_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
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
    const QString line = inColour(host::harmless(rawLine), colour);
    if (progress().isEmpty()) {
        write(file, line + u'\n');
        return;
    }
    write(stdout, QString::fromLatin1(kClearLine));
    write(file, line + u'\n');
    write(stdout, progress());
}

/// Standard output or error for what must not wait.
struct TNowStream
{
    explicit TNowStream(int descriptor) { output.attach(descriptor); }

    bool write(const QString& text) { return output.write(text.toUtf8()) == host::TNowOutput::TWritten::Yes; }

    host::TNowOutput output;
    qint64 leftOut = 0;
};

std::array<TNowStream, 2>& nowStreams()
{
    static std::array<TNowStream, 2> streams = {TNowStream(STDOUT_FILENO), TNowStream(STDERR_FILENO)};
    return streams;
}

void writeLineNow(bool complaint, const QString& rawLine)
{
    if (listener()) {
        listener()(rawLine, complaint);
    }
    auto& [output, error] = nowStreams();
    TNowStream& stream = complaint ? error : output;
    QString text = host::harmless(rawLine) + u'\n';
    if (stream.leftOut > 0) {
        text.prepend(QStringLiteral("(%1 lines were left out: nobody took them)\n").arg(stream.leftOut));
    }
    const bool progressShown = !progress().isEmpty();
    if (progressShown) {
        output.write(QString::fromLatin1(kClearLine));
    }
    stream.leftOut = stream.write(text) ? 0 : stream.leftOut + 1;
    if (progressShown) {
        output.write(progress());
    }
}

} // namespace

void print(const QString& line)
{
    writeLine(stdout, line);
}

void print(const QString& line, TColour colour)
{
    writeLine(stdout, line, coloured() ? colour : TColour::Usual);
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
    writeLineNow(false, line);
}

void complainNow(const QString& line)
{
    writeLineNow(true, line);
}

void bePatient(int ms)
{
    for (TNowStream& stream : nowStreams()) {
        stream.output.bePatient(ms);
    }
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
