#include "apps/tnv5-desk/language.h"
#include "apps/tnv5-desk/main_window.h"
#include "local/local_fixture.h"

#include <QBuffer>
#include <QFile>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTest>

using namespace tnv5;
using namespace tnv5::desk;
using tests::json;

namespace {

const char* const kState = R"({"club": "Riverside", "inside": 12,
    "lines": [{"name": "gates", "open": true}],
    "gates": [{"address": "01A", "zone": "hall", "direction": "in", "line": "gates", "answering": null, "busy": true,
               "holder": "Anna Berg"},
              {"address": "02A", "zone": "hall", "direction": "out", "line": "gates", "answering": null},
              {"address": "03A", "zone": "pool", "direction": "in", "line": "gates", "answering": null}],
    "lamps": [{"name": "Sun 1", "on": true, "answers": true, "holder": "Felix", "secondsLeft": 299}]})";

/// The whole desk on a club in memory, over a real socket.
class DeskWindow : public tests::LocalServer
{
protected:
    DeskWindow()
    {
        club.State = json(kState);
        setLanguage(QStringLiteral("en"));
        apply(TTheme::Light);
        open();
    }
    ~DeskWindow() override { setLanguage(QStringLiteral("en")); }

    void open(const TMainWindow::TOptions& options = {})
    {
        window.reset();
        model = std::make_unique<TDeskModel>(path());
        window = std::make_unique<TMainWindow>(*model, options);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    bool connects()
    {
        model->start();
        return eventually([this] { return model->live(); });
    }
    void tellPass(const char* pass)
    {
        server->tell(
            {{QStringLiteral("event"), QStringLiteral("pass")}, {QStringLiteral("pass"), json(pass)}});
    }
    QString caption(int index)
    {
        return window->gates()->panel().TurnStylerList()->GetTurnStylerItem(index)->CaptionPanel()->text();
    }
    QPushButton* panelButton(int index, int which)
    {
        return window->gates()
            ->panel()
            .TurnStylerList()
            ->GetTurnStylerItem(index)
            ->MainPanel()
            ->findChildren<QPushButton*>()
            .at(which);
    }
    QStringList equipment()
    {
        QStringList rows;
        const QTreeWidget* const tree = window->equipment()->tree();
        for (int section = 0; section < tree->topLevelItemCount(); ++section) {
            for (int row = 0; row < tree->topLevelItem(section)->childCount(); ++row) {
                const QTreeWidgetItem* const item = tree->topLevelItem(section)->child(row);
                rows << item->text(0) + u'=' + item->text(1);
            }
        }
        return rows;
    }
    /// Answers the question about opening a gate.
    void answer(const QString& reason, const QString& who = {})
    {
        TOpenDialog* const question = window->question();
        ASSERT_NE(question, nullptr);
        question->reasonBox()->setEditText(reason);
        question->whoBox()->setText(who);
        question->openButton()->click();
    }

    std::unique_ptr<TDeskModel> model;
    std::unique_ptr<TMainWindow> window;
};

TEST_F(DeskWindow, ShowsTheGatesOfTheClub)
{
    ASSERT_TRUE(connects());
    EXPECT_EQ(caption(0), QStringLiteral("hall [Anna Berg]"));
    EXPECT_EQ(caption(1), QStringLiteral("pool [free]"));
    EXPECT_TRUE(panelButton(0, 0)->isEnabled());
    EXPECT_TRUE(panelButton(0, 1)->isEnabled());
    EXPECT_FALSE(panelButton(1, 1)->isEnabled()); // the pool has no way out
    EXPECT_FALSE(window->banner()->isVisible());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Riverside – desk"));
    const QStringList before = equipment();
    EXPECT_EQ(before.filter(QRegularExpression(QStringLiteral("^Sun 1=4:5\\d – Felix$"))).size(), 1)
        << before.join(u' ').toStdString();
    EXPECT_TRUE(eventually([&] { return equipment() != before; })); // by itself
}

TEST_F(DeskWindow, WithoutAHostNothingLooksLive)
{
    server.reset();
    model->start();
    EXPECT_TRUE(eventually([this] { return !model->whyNot().isEmpty(); }));
    EXPECT_TRUE(window->banner()->isVisible());
    EXPECT_TRUE(window->banner()->text().contains(model->whyNot()));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Desk – not connected"));
    EXPECT_FALSE(window->gates()->openA()->isEnabled());
}

TEST_F(DeskWindow, ALostHostEndsWhatIsLiveAndComesBack)
{
    ASSERT_TRUE(connects());
    tellPass(R"({"began": "b", "card": "17", "name": "Anna Berg", "gate": "01A", "opened": true})");
    ASSERT_TRUE(eventually([this] { return model->passes().size() == 1; }));
    window->askToOpen(QStringLiteral("01A"));
    ASSERT_NE(window->question(), nullptr);
    server.reset();
    ASSERT_TRUE(eventually([this] { return !model->live(); }));
    EXPECT_TRUE(window->banner()->isVisible());
    EXPECT_EQ(caption(0), QStringLiteral("hall [not connected]"));
    EXPECT_FALSE(panelButton(0, 0)->isEnabled());
    EXPECT_FALSE(window->gates()->openA()->isEnabled());
    EXPECT_EQ(equipment(), QStringList());
    EXPECT_EQ(window->passing()->outcome()->text(), QStringLiteral("not known, the connection was lost"));
    EXPECT_TRUE(
        eventually([this] { return window->question() == nullptr; })); // nobody confirms into the void
    window->askToOpen(QStringLiteral("01A"));
    EXPECT_EQ(window->question(), nullptr);

    server = std::make_unique<host::TLocalServer>(club, path());
    ASSERT_TRUE(eventually([this] { return model->live(); }));
    EXPECT_FALSE(window->banner()->isVisible());
    EXPECT_EQ(caption(0), QStringLiteral("hall [Anna Berg]"));
    EXPECT_TRUE(panelButton(0, 0)->isEnabled());
}

TEST_F(DeskWindow, AGateIsOpenedByTheMouse)
{
    ASSERT_TRUE(connects());
    QTest::mouseClick(panelButton(0, 1), Qt::LeftButton);
    ASSERT_NE(window->question(), nullptr);
    answer(QStringLiteral(" a  pram "), QStringLiteral("Olha"));
    ASSERT_TRUE(eventually([this] { return !club.Opened.isEmpty(); }));
    EXPECT_TRUE(club.Opened.first().startsWith(QStringLiteral("02A|Olha (")))
        << club.Opened.first().toStdString();
    EXPECT_TRUE(club.Opened.first().endsWith(QStringLiteral("|a pram")));
    ASSERT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
    EXPECT_EQ(window->answer()->text(), QStringLiteral("Gate 02A: the command to open was given."));
    ASSERT_TRUE(eventually([this] { return window->question() == nullptr; }));
    window->askToOpen(QStringLiteral("01A"));
    EXPECT_EQ(window->question()->who(), QStringLiteral("Olha")); // as before
}

TEST_F(DeskWindow, AGateIsOpenedByTheKeyboard)
{
    ASSERT_TRUE(connects());
    QTest::keyClick(window.get(), Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(window->gates()->panel().ASelectedIndex(), 1);
    EXPECT_EQ(window->gates()->openA()->text(), QStringLiteral("Open 03A (pool, in) (F7)"));
    EXPECT_EQ(window->gates()->openB()->text(), QStringLiteral("No gate (F8)"));
    QTest::keyClick(window.get(), Qt::Key_F8);
    EXPECT_EQ(window->question(), nullptr);
    QTest::keyClick(window.get(), Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(window->gates()->panel().ASelectedIndex(), 0);
    QTest::keyClick(window.get(), Qt::Key_F8);
    ASSERT_NE(window->question(), nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window->question()));
    QWidget* const reason = window->question()->reasonBox()->lineEdit();
    EXPECT_TRUE(window->question()->focusWidget() == window->question()->reasonBox() ||
                window->question()->focusWidget() == reason);
    QTest::keyClick(reason, Qt::Key_Return); // without a reason nothing happens
    QTest::keyClicks(reason, QStringLiteral("   "));
    QTest::keyClick(reason, Qt::Key_Return);
    ASSERT_NE(window->question(), nullptr);
    EXPECT_TRUE(window->question()->isVisible());
    EXPECT_FALSE(window->question()->openButton()->isEnabled());
    QTest::keyClicks(reason, QStringLiteral("guest"));
    QTest::keyClick(reason, Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return !club.Opened.isEmpty(); }));
    EXPECT_TRUE(club.Opened.first().startsWith(QStringLiteral("02A|")));
    EXPECT_TRUE(club.Opened.first().endsWith(QStringLiteral("|guest")));
}

TEST_F(DeskWindow, WhoCancelsOpensNothing)
{
    ASSERT_TRUE(connects());
    window->askToOpen(QStringLiteral("01A"));
    window->question()->reasonBox()->setEditText(QStringLiteral("guest"));
    QTest::keyClick(window->question(), Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return window->question() == nullptr; }));
    server->tell(json(R"({"event": "line", "text": "mark"})"));
    EXPECT_TRUE(eventually([this] { return model->log().rowCount() == 2; }));
    EXPECT_EQ(club.Opened, QStringList());
}

TEST_F(DeskWindow, TheHostsRefusalIsSaid)
{
    club.Trouble = QStringLiteral("hall is not open: gone");
    ASSERT_TRUE(connects());
    window->askToOpen(QStringLiteral("01A"));
    answer(QStringLiteral("guest"));
    ASSERT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
    EXPECT_EQ(window->answer()->text(), QStringLiteral("Gate 01A was not opened: hall is not open: gone"));
    EXPECT_EQ(model->log().line(model->log().rowCount() - 1).level, TLogLevel::Error);
}

TEST_F(DeskWindow, ShowsWhoPasses)
{
    QByteArray png;
    QBuffer buffer(&png);
    QImage picture(16, 20, QImage::Format_RGB32);
    picture.fill(Qt::red);
    picture.save(&buffer, "PNG");
    club.Pictures[QStringLiteral("17")] = png;
    ASSERT_TRUE(connects());
    EXPECT_EQ(window->passing()->name()->text(), QStringLiteral("Nobody yet"));
    const char* const anna = R"({"began": "2026-01-05T12:00:00Z", "ended": "", "card": "17", "member": 1,
        "name": "<b>Anna</b>", "balance": 1250, "gate": "01A", "zone": "hall", "direction": "in", "opened": true})";
    tellPass(anna);
    ASSERT_TRUE(eventually([this] { return model->passes().size() == 1; }));
    EXPECT_EQ(window->passing()->name()->text(), QStringLiteral("<b>Anna</b>"));
    EXPECT_EQ(window->passing()->name()->textFormat(), Qt::PlainText);
    EXPECT_EQ(window->passing()->outcome()->text(), QStringLiteral("may pass"));
    EXPECT_EQ(window->passing()->details()->text(), QStringLiteral("01A (hall, in)\nCard 17\nBalance 12.50"));
    EXPECT_FALSE(window->passing()->picture()->pixmap().isNull());

    QJsonObject ended = json(anna);
    ended[QStringLiteral("ended")] = QStringLiteral("2026-01-05T12:00:02Z");
    ended[QStringLiteral("ending")] = QStringLiteral("passed");
    server->tell({{QStringLiteral("event"), QStringLiteral("pass")}, {QStringLiteral("pass"), ended}});
    ASSERT_TRUE(eventually([this] { return !model->passes().front().underWay(); }));
    EXPECT_EQ(model->passes().size(), 1U); // the same pass
    EXPECT_EQ(window->passing()->outcome()->text(), QStringLiteral("passed"));
    EXPECT_FALSE(window->passing()->picture()->pixmap().isNull());

    tellPass(R"({"began": "2026-01-05T12:00:03Z", "card": "99", "gate": "02A", "opened": false,
        "reason": "unknown card"})");
    ASSERT_TRUE(eventually([this] { return model->passes().size() == 2; }));
    EXPECT_EQ(window->passing()->name()->text(), QStringLiteral("card 99"));
    EXPECT_EQ(window->passing()->outcome()->text(), QStringLiteral("refused: unknown card"));
    EXPECT_TRUE(window->passing()->picture()->pixmap().isNull());
    QTreeWidget* const list = window->passing()->list();
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(1)->text(2), QStringLiteral("<b>Anna</b>"));
    list->setCurrentItem(list->topLevelItem(1)); // who was that before?
    EXPECT_EQ(window->passing()->name()->text(), QStringLiteral("<b>Anna</b>"));
}

TEST_F(DeskWindow, ARefusalIsSeenAtItsGate)
{
    ASSERT_TRUE(connects());
    tellPass(R"({"began": "b", "card": "99", "gate": "03A", "opened": false, "reason": "expired"})");
    EXPECT_TRUE(eventually([this] { return caption(1) == QStringLiteral("pool [expired]"); }));
}

TEST_F(DeskWindow, RemembersSoManyPasses)
{
    ASSERT_TRUE(connects());
    for (int i = 0; i < 3 * TDeskModel::kPasses; ++i) {
        server->tell(
            {{QStringLiteral("event"), QStringLiteral("pass")},
             {QStringLiteral("pass"), QJsonObject{{QStringLiteral("began"), QString::number(i)},
                                                  {QStringLiteral("gate"), QStringLiteral("01A")},
                                                  {QStringLiteral("picture"), QStringLiteral("UE5H")}}}});
    }
    const QString last = QString::number(3 * TDeskModel::kPasses - 1);
    ASSERT_TRUE(
        eventually([&] { return !model->passes().empty() && model->passes().front().began == last; }));
    EXPECT_EQ(model->passes().size(), std::size_t(TDeskModel::kPasses));
    EXPECT_EQ(window->passing()->list()->topLevelItemCount(), TDeskModel::kPasses);
    EXPECT_TRUE(model->passes()[TDeskModel::kPictures].picture.isEmpty());
}

TEST_F(DeskWindow, TheLogIsLiveAndSearched)
{
    ASSERT_TRUE(connects());
    server->tell(
        json(R"({"event": "line", "level": "error", "time": "2026-01-05T12:00:00Z", "text": "no paper"})"));
    server->tell(
        json(R"({"event": "line", "level": "info", "time": "2026-01-05T12:00:01Z", "text": "01A opened"})"));
    ASSERT_TRUE(eventually([this] { return model->log().rowCount() == 3; })); // with that of the connection
    TLogView& log = *window->logView();
    EXPECT_EQ(log.count()->text(), QStringLiteral("3 of 3"));
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(log.search()->hasFocus());
    QTest::keyClicks(log.search(), QStringLiteral("paper"));
    EXPECT_EQ(log.count()->text(), QStringLiteral("1 of 3"));
    EXPECT_EQ(log.lines()->model()->rowCount(), 1);
    QTest::keyClick(log.search(), Qt::Key_Escape);
    EXPECT_EQ(log.count()->text(), QStringLiteral("3 of 3"));
    log.info()->setChecked(false);
    EXPECT_EQ(log.count()->text(), QStringLiteral("1 of 3"));
}

TEST_F(DeskWindow, ALongTroubleIsReadable)
{
    club.State[QStringLiteral("troubles")] =
        QJsonArray{QString(QStringLiteral("the printer has no paper ")).repeated(8)};
    ASSERT_TRUE(connects());
    QTreeWidget* const tree = window->equipment()->tree();
    const QTreeWidgetItem* const attention = tree->topLevelItem(0);
    ASSERT_EQ(attention->text(0), QStringLiteral("Attention"));
    const auto height = [&] { return tree->visualItemRect(attention->child(0)).height(); };
    const int room = tree->viewport()->width();
    const int lines = tree->fontMetrics().horizontalAdvance(attention->child(0)->text(0)) / room;
    ASSERT_GE(lines, 2);
    EXPECT_GE(height(), lines * tree->fontMetrics().height());
}

TEST_F(DeskWindow, GatesOfAFileAreShownInItsOrder)
{
    const QString file = FFolder.filePath(QStringLiteral("gates.ini"));
    QFile ini(file);
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write("[Gates]\nItemsCount=2\nGateA1=03A\nCaption1=Pool side\nGateA2=77Z\nCaption2=Elsewhere\n");
    ini.close();
    TMainWindow::TOptions options;
    options.gatesFile = file;
    open(options);
    ASSERT_TRUE(connects());
    EXPECT_EQ(caption(0), QStringLiteral("Pool side [free]"));
    EXPECT_TRUE(window->gates()->openA()->isEnabled());
    window->gates()->selectNext(1);
    EXPECT_FALSE(window->gates()->openA()->isEnabled()); // the club has no such gate
    QFile::remove(file);
}

TEST_F(DeskWindow, KeysReachEveryPart)
{
    ASSERT_TRUE(connects());
    window->gates()->box()->setFocus();
    QList<QWidget*> seen;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(window.get(), Qt::Key_F6);
        seen << window->focusWidget();
    }
    EXPECT_EQ(seen, QList<QWidget*>({window->passing()->list(), window->equipment()->tree(),
                                     window->logView()->search(), window->gates()->box()}));
    QSet<QWidget*> tabbed;
    for (int i = 0; i < 40; ++i) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        tabbed << window->focusWidget();
    }
    for (QWidget* each : QList<QWidget*>{window->gates()->openA(), window->passing()->list(),
                                         window->equipment()->tree(), window->logView()->search(),
                                         window->logView()->errors(), window->logView()->lines()}) {
        EXPECT_TRUE(tabbed.contains(each)) << each->metaObject()->className();
    }
}

TEST_F(DeskWindow, FitsASmallScreenInEveryLanguage)
{
    for (const QString& language : languages()) { // 1920 by 1080 at 200 %
        ASSERT_TRUE(setLanguage(language));
        open();
        ASSERT_TRUE(connects());
        EXPECT_LE(window->minimumSizeHint().width(), 960) << language.toStdString();
        EXPECT_LE(window->minimumSizeHint().height(), 540) << language.toStdString();
    }
}

TEST_F(DeskWindow, EachLetterOfAMenuOrALabelIsGivenOnce)
{
    for (const QString& language : languages()) {
        ASSERT_TRUE(setLanguage(language));
        open();
        ASSERT_TRUE(connects());
        QStringList texts;
        for (const QAction* menu : window->menuBar()->actions()) {
            texts << menu->text();
        }
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            texts << (label->buddy() != nullptr ? label->text() : QString());
        }
        for (const QCheckBox* box : window->findChildren<QCheckBox*>()) {
            texts << box->text();
        }
        QString letters;
        for (const QString& each : texts) {
            const qsizetype at = each.indexOf(u'&');
            if (at >= 0) {
                EXPECT_FALSE(letters.contains(each[at + 1].toLower()))
                    << language.toStdString() << each.toStdString();
                letters += each[at + 1].toLower();
            }
        }
        EXPECT_EQ(letters.size(), 9) << language.toStdString();
    }
}

TEST(DeskTheme, TextsCanBeReadInBoth)
{
    for (const QPalette& colours : {lightPalette(), darkPalette()}) {
        for (const TMood mood : {TMood::Plain, TMood::Good, TMood::Warning, TMood::Bad, TMood::Faint}) {
            for (const auto role : {QPalette::Window, QPalette::Base}) {
                EXPECT_GE(contrast(moodColour(mood, colours), colours.color(role)), 4.5) << int(mood);
            }
        }
        EXPECT_GE(contrast(colours.color(QPalette::HighlightedText), colours.color(QPalette::Highlight)),
                  4.5);
        EXPECT_GE(contrast(colours.color(QPalette::ButtonText), colours.color(QPalette::Button)), 4.5);
    }
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.01);
    EXPECT_GE(contrast(Qt::white, QColor(0xa8201a)), 4.5); // the banner
}

} // namespace
