#include "apps/tnv5-desk/find_socket.h"
#include "apps/tnv5-desk/language.h"
#include "apps/tnv5-desk/main_window.h"
#include "apps/tnv5-desk/small_picture.h"
#include "tnv5/platform/errors.h"
#include "tnv5/version.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <cstdio>

namespace {

using namespace tnv5;

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kScreenshotLimitMs = 30'000; // for a host that does not come

struct TOptions
{
    QString socket;
    QString screenshot;
    int afterMs = 0; // the first state
    QString language;
    desk::TTheme theme = desk::TTheme::System;
    desk::TMainWindow::TOptions window;
};

int complain(const QString& text)
{
    std::fprintf(stderr, "tnv5-desk: %s\n", qUtf8Printable(text));
    return kUsage;
}

std::optional<desk::TTheme> toTheme(const QString& word)
{
    if (word.isEmpty()) {
        return desk::TTheme::System;
    }
    if (word == QLatin1String("light")) {
        return desk::TTheme::Light;
    }
    return word == QLatin1String("dark") ? std::optional(desk::TTheme::Dark) : std::nullopt;
}

/// The options, or why they are wrong.
std::optional<TOptions> read(const QApplication& application, QString& wrong)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The desk of a club: its gates, who is passing, the log, and gates opened by hand."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {QStringLiteral("socket"),
         QStringLiteral(
             "Local socket of the host; without it the one that is there, also when it comes later."),
         QStringLiteral("FILE")},
        {QStringLiteral("gates"),
         QStringLiteral("Gates of the panel, from the section Gates of an ini file; without it "
                        "all gates of the club."),
         QStringLiteral("FILE")},
        {QStringLiteral("who"), QStringLiteral("Who sits at the desk, for the journal."),
         QStringLiteral("NAME")},
        {QStringLiteral("language"), QStringLiteral("en, ru or uk; without it the system's."),
         QStringLiteral("CODE")},
        {QStringLiteral("theme"), QStringLiteral("light or dark; without it the system's."),
         QStringLiteral("THEME")},
        {QStringLiteral("screenshot"),
         QStringLiteral("Takes a picture of the window when the first state has come, "
                        "writes it and ends."),
         QStringLiteral("FILE")},
        {QStringLiteral("after"), QStringLiteral("Takes the picture so many seconds later."),
         QStringLiteral("SECONDS"), QStringLiteral("0")},
    });
    parser.process(application);
    TOptions options;
    options.socket = parser.value(QStringLiteral("socket"));
    options.screenshot = parser.value(QStringLiteral("screenshot"));
    options.window.gatesFile = parser.value(QStringLiteral("gates"));
    options.window.who = parser.value(QStringLiteral("who"));
    options.language = parser.isSet(QStringLiteral("language")) ? parser.value(QStringLiteral("language"))
                                                                : desk::systemLanguage();
    bool number = false;
    options.afterMs = static_cast<int>(parser.value(QStringLiteral("after")).toDouble(&number) * 1'000);
    const auto theme = toTheme(parser.value(QStringLiteral("theme")));
    options.theme = theme.value_or(desk::TTheme::System);
    if (!theme) {
        wrong = QStringLiteral("--theme is light or dark");
    } else if (!desk::languages().contains(options.language)) {
        wrong = QStringLiteral("--language is en, ru or uk");
    } else if (!number || options.afterMs < 0 || options.afterMs > kScreenshotLimitMs) {
        wrong = QStringLiteral("--after is a number of seconds, 30 at most");
    } else if (!parser.positionalArguments().isEmpty()) {
        wrong = QStringLiteral("%1 is not understood; see --help").arg(parser.positionalArguments().first());
    } else if (!options.window.gatesFile.isEmpty() && !QFile::exists(options.window.gatesFile)) {
        wrong = QStringLiteral("%1 is not there").arg(options.window.gatesFile);
    }
    return wrong.isEmpty() ? std::optional(options) : std::nullopt;
}

/// Whether it is clear which host is meant, as far as there is one yet.
QString whyNoHost(const QString& said)
{
    try {
        if (said.isEmpty()) {
            desk::findSocket();
        }
    } catch (...) {
        return platform::exceptionMessage();
    }
    return {};
}

void takePicture(desk::TMainWindow& window, const QString& file)
{
    const bool done = desk::smallPicture(window.grab().toImage()).save(file, "PNG", 0);
    if (!done) {
        complain(QStringLiteral("%1 cannot be written").arg(file));
    }
    QCoreApplication::exit(done ? 0 : kFailed);
}

/// @param screen whether somebody can see the window
int run(QApplication& application, bool screen)
{
    QString wrong;
    const std::optional<TOptions> options = read(application, wrong);
    if (options) {
        wrong = whyNoHost(options->socket);
    }
    if (!wrong.isEmpty()) {
        return complain(wrong);
    }
    if (!screen && options->screenshot.isEmpty()) {
        complain(QStringLiteral("there is no screen"));
        return kFailed;
    }
    desk::setLanguage(options->language);
    desk::apply(options->theme);
    const QString said = options->socket;
    desk::TDeskModel model([said] { return said.isEmpty() ? desk::findSocket() : said; });
    desk::TMainWindow window(model, options->window);
    if (!options->screenshot.isEmpty()) {
        QObject::connect(&model, &desk::TDeskModel::liveChanged, &window, [&] {
            if (model.live()) {
                QTimer::singleShot(options->afterMs, &window,
                                   [&] { takePicture(window, options->screenshot); });
            }
        });
        QTimer::singleShot(kScreenshotLimitMs + options->afterMs, &window, [&] {
            complain(QStringLiteral("no host has come: %1").arg(model.whyNot()));
            QCoreApplication::exit(kFailed);
        });
    }
    window.show();
    model.start();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    const bool screen = !qEnvironmentVariableIsEmpty("DISPLAY") ||
                        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
                        qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (!screen) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tnv5-desk"));
    QApplication::setApplicationVersion(QStringLiteral(TNV5_VERSION_STRING));
    platform::setExceptionHandler([](const QString& text, const std::exception_ptr&) { complain(text); });
    try {
        return run(application, screen);
    } catch (...) {
        complain(platform::exceptionMessage());
    }
    return kFailed;
}
