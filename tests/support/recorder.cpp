#include "support/recorder.h"

#include <algorithm>
#include <stdexcept>

namespace tnv5::tests {

QString shown(const QByteArray& bytes)
{
    QString result;
    for (const char byte : bytes) {
        const auto code = static_cast<uchar>(byte);
        if (byte == '\r' || byte == '\n') {
            result += byte == '\r' ? QStringLiteral("\\r") : QStringLiteral("\\n");
        } else if (code < 0x20 || code >= 0x7F) {
            result += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
        } else {
            result += QLatin1Char(byte);
        }
    }
    return result;
}

QString logged(const QString& text)
{
    return QStringLiteral("log ") + text;
}

QString failed(const QString& text)
{
    return QStringLiteral("error ") + text;
}

QString raised(const QString& message)
{
    return QStringLiteral("raised ") + message;
}

QString wrote(const QByteArray& bytes)
{
    return QStringLiteral("write ") + shown(bytes);
}

void TRecorder::each(const QString& beginning, std::function<void()> action)
{
    OnLine = [beginning, action = std::move(action)](const QString& line) {
        if (line.startsWith(beginning)) {
            action();
        }
    };
}

void TRecorder::once(const QString& beginning, std::function<void()> action)
{
    each(beginning, [this, action = std::move(action)] {
        OnLine = {};
        action();
    });
}

void TRecorder::raiseOnce(const QString& beginning, const char* message)
{
    once(beginning, [message] { throw std::runtime_error(message); });
}

void TRecorder::attach(TMemoryPort& port)
{
    port.OnWritten = [this](const QByteArray& bytes) { add(wrote(bytes)); };
}

void TRecorder::add(const QString& line)
{
    note(line);
    if (OnLine) {
        const auto hook = OnLine; // it may replace itself
        hook(line);
    }
}

void TRecorder::add(bool rightSender, const QString& word, const QStringList& values)
{
    const QString line = word + u' ' + values.join(Separator);
    EXPECT_TRUE(rightSender) << "wrong sender: " << line.toStdString();
    add(line);
}

qsizetype TRecorder::countOf(const QString& beginning) const
{
    return std::count_if(FLines.begin(), FLines.end(),
                         [&](const QString& line) { return line.startsWith(beginning); });
}

void TRecorder::expect(const QStringList& lines, TSourceLine where)
{
    const ::testing::ScopedTrace trace(where.file_name(), int(where.line()), "transcript");
    EXPECT_EQ(lines.join(u'\n').toStdString(), take().join(u'\n').toStdString());
}

void TRecorder::append(QStringList& texts, const QVariant& value)
{
    EXPECT_EQ(value.typeId(), int(QMetaType::QString));
    texts << value.toString();
}

void TRecorder::append(QStringList& texts, const QImage& value)
{
    if (!value.isNull()) {
        texts << QStringLiteral("picture");
    }
}

} // namespace tnv5::tests
