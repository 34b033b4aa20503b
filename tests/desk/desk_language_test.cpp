#include "apps/tnv5-desk/language.h"
#include "apps/tnv5-desk/words.h"
#include "tnv5/host/local/local_texts.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

using namespace tnv5::desk;

namespace {

const QString kFolder = QStringLiteral(TNV5_SOURCE "/apps/tnv5-desk");

struct TMessage
{
    QString source;
    QString translation;
    bool finished = true;
};

QList<TMessage> messagesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QList<TMessage> messages;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (xml.name() == QLatin1String("message")) {
            messages.append(TMessage());
        } else if (xml.name() == QLatin1String("source")) {
            messages.last().source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            messages.last().finished = !xml.attributes().hasAttribute(QStringLiteral("type"));
            messages.last().translation = xml.readElementText();
        }
    }
    EXPECT_FALSE(xml.hasError());
    return messages;
}

QStringList placesOf(const QString& text)
{
    QStringList places;
    auto found = QRegularExpression(QStringLiteral("%[0-9]")).globalMatch(text);
    while (found.hasNext()) {
        places << found.next().captured();
    }
    places.sort();
    return places;
}

class DeskLanguage : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DeskLanguage, HasEveryText)
{
    const QTemporaryDir work; // what is in the program now, beside what is translated
    const QString file = work.filePath(QStringLiteral("desk.ts"));
    ASSERT_TRUE(
        QFile::copy(kFolder + QStringLiteral("/i18n/tnv5-desk_%1.ts").arg(QLatin1String(GetParam())), file));
    const qsizetype before = messagesOf(file).size();
    QProcess lupdate;
    lupdate.start(QStringLiteral(TNV5_LUPDATE),
                  {QStringLiteral("-silent"), QStringLiteral("-no-obsolete"), QStringLiteral("-I"),
                   QStringLiteral(TNV5_SOURCE), kFolder, QStringLiteral("-ts"), file});
    ASSERT_TRUE(lupdate.waitForFinished(120'000));
    ASSERT_EQ(lupdate.exitCode(), 0) << lupdate.readAllStandardError().toStdString();
    const QList<TMessage> messages = messagesOf(file);
    EXPECT_EQ(messages.size(), before); // none is missing, none is left over
    EXPECT_GT(messages.size(), 100);
    for (const TMessage& message : messages) {
        EXPECT_TRUE(message.finished && !message.translation.trimmed().isEmpty())
            << message.source.toStdString();
        EXPECT_EQ(placesOf(message.source), placesOf(message.translation)) << message.source.toStdString();
        EXPECT_EQ(message.source.contains(u'&'), message.translation.contains(u'&'))
            << message.source.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, DeskLanguage, ::testing::Values("ru", "uk"));

TEST(DeskLanguages, SayWhatTheConnectionSays)
{
    using namespace tnv5::host;
    const QStringList said = {
        local_texts::kNoHost.arg(QStringLiteral("/a: b"), local_texts::kNobodyThere),
        local_texts::kNoHost.arg(QStringLiteral("/a"), local_texts::kLeftBehind),
        local_texts::kNoHost.arg(QStringLiteral("/a"), local_texts::kForbidden),
        local_texts::kNoAnswer.arg(QStringLiteral("/a")).arg(10),
        local_texts::kLost,
        local_texts::kJunk.arg(QStringLiteral("/a")),
        local_texts::kTooMany,
    };
    for (const QString& text : said) {
        EXPECT_EQ(TWords::connection(text), text);
    }
    ASSERT_TRUE(setLanguage(QStringLiteral("uk")));
    EXPECT_EQ(TWords::connection(said[0]),
              QStringLiteral("За адресою /a: b хост не відповідає: такого сокета немає"));
    EXPECT_EQ(TWords::connection(said[3]), QStringLiteral("Хост за адресою /a не відповідає вже 10 с."));
    for (const QString& text : said) {
        EXPECT_FALSE(TWords::connection(text).contains(QRegularExpression(QStringLiteral("[b-zA-Z]{2}"))))
            << TWords::connection(text).toStdString();
    }
    EXPECT_EQ(TWords::connection(QStringLiteral("else")), QStringLiteral("else"));
    setLanguage(QStringLiteral("en"));
}

TEST(DeskLanguages, CanBeChosen)
{
    EXPECT_TRUE(setLanguage(QStringLiteral("uk")));
    EXPECT_EQ(TWords::way(TWay::Out), QStringLiteral("вихід"));
    EXPECT_TRUE(setLanguage(QStringLiteral("ru")));
    EXPECT_EQ(TWords::way(TWay::Out), QStringLiteral("выход"));
    EXPECT_TRUE(setLanguage(QStringLiteral("en")));
    EXPECT_EQ(TWords::way(TWay::Out), QStringLiteral("out"));
    EXPECT_FALSE(setLanguage(QStringLiteral("xx")));
    EXPECT_TRUE(languages().contains(systemLanguage()));
}

} // namespace
