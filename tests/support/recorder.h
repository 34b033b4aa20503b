#pragma once

#include "support/source_line.h"
#include "support/text_printers.h"
#include "tnv5/platform/component.h"
#include "tnv5/testing/memory_port.h"

#include <QImage>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <gtest/gtest.h>

#include <type_traits>

namespace tnv5::tests {

using platform::TComponent;
using testkit::TMemoryPort;

/// Bytes as a transcript shows them: "\r", "\n" and, for what is not ASCII, "\x9f".
QString shown(const QByteArray& bytes);

// The lines that every transcript knows.

QString logged(const QString& text);
QString failed(const QString& text);
/// What reached the host's exception handler. A conversion error is only called "EConvertError": its wording
/// is the system's.
QString raised(const QString& message);
/// One write to a port.
QString wrote(const QByteArray& bytes);

/// One ordered trace, a line of text for each thing that a component does towards its host, its port and
/// whatever else a fixture puts in a test's hand. A test injects and then expects, and reads like a
/// transcript.
///
///     trace.attach(*scales);
///     trace.attach(*port);
///     scales->GetWeight(true);
///     trace.expect({wrote("D"), "log [05] Send to port D"});
///
/// A line is a word and the values of the event: "log", "error", "status", "img", "route", "weight", "write"
/// are written here, "check" by `TAnswers`; a fixture adds words for what only its component does.
class TRecorder
{
public:
    /// Between the values of one event.
    QChar Separator = u' ';

    /// Called after each line, inside the event that made it, for handlers that misbehave.
    std::function<void(const QString& line)> OnLine;

    /// Calls `action` inside each event whose line begins like this, or inside the first one only. One at a
    /// time: this is `OnLine`.
    void each(const QString& beginning, std::function<void()> action);
    void once(const QString& beginning, std::function<void()> action);
    /// The handler of the first event whose line begins like this raises.
    void raiseOnce(const QString& beginning, const char* message = "host trouble");

    /// Assigns the events that components have in common. The recorder must outlive the component.
    template <class Component>
    void attach(Component& component);

    /// Records what is written, byte for byte.
    void attach(TMemoryPort& port);

    /// A handler for any event: records the word and the values, and who sends them.
    auto handler(const TComponent& sender, const QString& word)
    {
        return [this, expected = &sender, word](TComponent* Sender, const auto&... values) {
            QStringList texts;
            (append(texts, values), ...);
            add(Sender == expected, word, texts);
        };
    }

    /// One event; `note` is for what happens outside of every handler.
    void add(const QString& line);
    void note(const QString& line) { FLines << line; }

    /// Lines since the last `take` or `expect`.
    QStringList take() { return std::exchange(FLines, {}); }
    qsizetype count() const { return FLines.size(); }
    qsizetype countOf(const QString& beginning) const;

    /// Everything since the last call must be these lines.
    void expect(const QStringList& lines, TSourceLine where = TSourceLine::current());

private:
    void add(bool rightSender, const QString& word, const QStringList& values);

    static void append(QStringList& texts, const QString& value) { texts << value; }
    static void append(QStringList& texts, const QVariant& value); // must be a text
    static void append(QStringList& texts, const QImage& value);   // an empty one is no word
    template <class Number>
    requires std::is_arithmetic_v<Number>
    static void append(QStringList& texts, Number value) { texts << QString::number(value); }

    QStringList FLines;
};

template <class Component>
void TRecorder::attach(Component& component)
{
    component.SetOnLog(handler(component, QStringLiteral("log")));
    component.SetOnError(handler(component, QStringLiteral("error")));
    if constexpr (requires { component.OnCheckStatus(); }) {
        component.SetOnCheckStatus(handler(component, QStringLiteral("status")));
    }
    if constexpr (requires { component.OnGetImg(); }) {
        component.SetOnGetImg(handler(component, QStringLiteral("img")));
    }
    if constexpr (requires { component.OnGetData(); }) {
        component.SetOnGetData(handler(component, QStringLiteral("route")));
    }
    if constexpr (requires { component.OnWeight(); }) {
        component.SetOnWeight(handler(component, QStringLiteral("weight")));
    }
}

} // namespace tnv5::tests
