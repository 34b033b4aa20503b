// The dialogues on the pages of the families (docs/scales/N-*.md), played line by line: what an installer
// compares with the log of a real scale is what the component says.
//
// In a block "```dialogue" a line that is not indented is what is done:
//
//     ask             GetWeight(true)
//     scale BYTES     one read from the scale
//     pause SECONDS   time passes
//     known NUMBER    LastWeight is this
//
// and a line behind two blanks is what the component says about it: a line of OnLog, or
//
//     weight NUMBER   OnWeight
//     error TEXT      OnError
//     raised          a conversion error reaches the host's exception handler

#include "support/dialogue_page.h"
#include "wire_samples.h"

#include <QDir>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const QString kIndent = QStringLiteral("  ");

/// Plays one block and writes down what happens, in the words of the page.
class TPlayed : private TScalesFixture
{
public:
    explicit TPlayed(int type) { use(type); }

    QStringList play(const QStringList& page)
    {
        for (const QString& line : page) {
            act(line);
        }
        takeEvents();
        return FLines;
    }

private:
    void act(const QString& line)
    {
        const QString rest = line.section(u' ', 1);
        if (line == u"ask") {
            tell(line);
            scales->GetWeight(true);
        } else if (line.startsWith(u"scale ")) {
            tell(line);
            feed(unescaped(rest));
        } else if (line.startsWith(u"pause ")) {
            tell(line);
            clock.advance(qRound64(rest.section(u' ', 0, 0).toDouble() * 1'000));
        } else if (line.startsWith(u"known ")) {
            tell(QStringLiteral("known %1").arg(scales->LastWeight()));
        }
    }

    void tell(const QString& line)
    {
        takeEvents();
        FLines << line;
    }

    void takeEvents()
    {
        for (const QString& event : trace.take()) {
            if (event.startsWith(u"log ")) {
                FLines << kIndent + event.mid(4);
            } else if (event.startsWith(u"raised ")) {
                FLines << kIndent + QStringLiteral("raised");
            } else if (!event.startsWith(u"write ")) { // its line in the log tells the same
                FLines << kIndent + event;
            }
        }
    }

    QStringList FLines;
};

TEST(Pages, EveryFamilyHasOneWithDialoguesThatAreTrue)
{
    const QDir docs(QStringLiteral(TNV5_DOCS "/scales"));
    for (const TSample& sample : samples()) {
        const QStringList pages = docs.entryList({QStringLiteral("%1-*.md").arg(sample.type)});
        ASSERT_EQ(pages.size(), 1) << "family " << sample.type;
        const QList<QStringList> dialogues = dialoguesOf(pageOf(docs.filePath(pages.first())));
        EXPECT_FALSE(dialogues.isEmpty()) << pages.first().toStdString();
        for (const QStringList& dialogue : dialogues) {
            EXPECT_EQ(normalised(dialogue), normalised(TPlayed(sample.type).play(dialogue)))
                << pages.first().toStdString();
        }
    }
}

} // namespace
