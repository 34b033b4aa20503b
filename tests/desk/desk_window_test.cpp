#include "apps/tnv5-desk/language.h"
#include "apps/tnv5-desk/main_window.h"
#include "local/local_fixture.h"

#include <QBuffer>
#include <QFile>
#include <QLocalServer>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QStatusBar>
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
        model = std::make_unique<TDeskModel>([this] { return FWhere; });
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

    /// The answer at the bottom without the time of day in front.
    QString said()
    {
        const QString text = window->answer()->text();
        EXPECT_TRUE(text.isEmpty() || QTime::fromString(text.left(8), QStringLiteral("HH:mm:ss")).isValid())
            << text.toStdString();
        return text.mid(10);
    }
    void writeGates(const QByteArray& text)
    {
        QFile ini(FGatesFile);
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(text);
        ini.close();
        TMainWindow::TOptions options;
        options.gatesFile = FGatesFile;
        open(options);
    }

    const QString FGatesFile = FFolder.filePath(QStringLiteral("gates.ini"));
    QString FWhere = path(); // where the desk looks
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
    EXPECT_EQ(said(), QStringLiteral("Gate 02A: the command to open was given."));
    ASSERT_TRUE(eventually([this] { return window->question() == nullptr; }));
    window->askToOpen(QStringLiteral("01A"));
    EXPECT_EQ(window->question()->who(), QStringLiteral("Olha")); // as before
    answer(QStringLiteral("guest"));
    EXPECT_EQ(window->answer()->text(), QString()); // that of before is not about this one
    EXPECT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
}

TEST_F(DeskWindow, WhetherAGateOpenedIsNotKnownWhenTheConnectionGoes)
{
    ASSERT_TRUE(connects());
    club.OnOpen = [this] { server.reset(); };
    window->askToOpen(QStringLiteral("01A"));
    answer(QStringLiteral("guest"));
    ASSERT_TRUE(eventually([this] { return !model->live(); }));
    ASSERT_EQ(club.Opened.size(), 1);
    const QString unknown =
        QStringLiteral("Gate 01A: not known whether it was opened, the connection was lost.");
    EXPECT_EQ(said(), unknown); // and it stays
    EXPECT_EQ(model->log().line(model->log().rowCount() - 2).text, unknown);
}

TEST_F(DeskWindow, WhatWasNeverSentWasNotOpened)
{
    ASSERT_TRUE(connects());
    server.reset();
    ASSERT_TRUE(eventually([this] { return !model->live(); }));
    model->open(QStringLiteral("01A"), {}, QStringLiteral("guest"));
    ASSERT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
    EXPECT_EQ(said(), QStringLiteral("Gate 01A was not opened: The connection to the host is lost."));
}

/// A host that says what it is told to.
class TStrangeHost
{
public:
    explicit TStrangeHost(const QString& path, const QJsonObject& toOpen)
    {
        FServer.listen(path);
        QObject::connect(&FServer, &QLocalServer::newConnection, &FServer, [this, toOpen] {
            QLocalSocket* const socket = FServer.nextPendingConnection();
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, toOpen] {
                while (socket->canReadLine()) {
                    const QJsonObject request = host::fromLine(socket->readLine()).value_or(QJsonObject());
                    const bool watch = request.value(u"do") == QLatin1String("watch");
                    QJsonObject answer = watch ? json(R"({"ok": true})") : toOpen;
                    answer.insert(u"id", request.value(u"id"));
                    socket->write(host::toLine(answer));
                    if (watch) {
                        socket->write(host::toLine({{QStringLiteral("event"), QStringLiteral("state")},
                                                    {QStringLiteral("state"), json(kState)}}));
                    }
                }
            });
        });
    }

private:
    QLocalServer FServer;
};

TEST_F(DeskWindow, ARefusalWithoutAReasonIsNoSuccess)
{
    server.reset();
    const TStrangeHost strange(path(), json(R"({"ok": false})"));
    ASSERT_TRUE(connects());
    window->askToOpen(QStringLiteral("01A"));
    answer(QStringLiteral("guest"));
    ASSERT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
    EXPECT_EQ(said(), QStringLiteral("Gate 01A was not opened: no reason given"));
}

TEST_F(DeskWindow, AHostThatBeginsLaterIsFound)
{
    server.reset();
    model->start();
    ASSERT_TRUE(eventually([this] { return !model->whyNot().isEmpty(); }));
    FWhere = FFolder.filePath(QStringLiteral("later.socket"));
    server = std::make_unique<host::TLocalServer>(club, FWhere);
    ASSERT_TRUE(eventually([this] { return model->live(); }));
    EXPECT_FALSE(window->banner()->isVisible());
    EXPECT_EQ(window->gates()->panel().TurnStylerList()->GetTurnStylerItem(0)->IP(), FWhere);
}

TEST_F(DeskWindow, TheChosenGateStaysWhenTheClubGetsOthers)
{
    ASSERT_TRUE(connects());
    window->gates()->selectNext(1);
    ASSERT_EQ(window->gates()->openA()->text(), QStringLiteral("Open 03A (pool, in) (F7)"));
    const auto gate = [](const char* address, const char* zone) {
        return QJsonObject{{QStringLiteral("address"), QLatin1String(address)},
                           {QStringLiteral("zone"), QLatin1String(zone)},
                           {QStringLiteral("direction"), QStringLiteral("in")}};
    };
    club.State[QStringLiteral("gates")] =
        QJsonArray{gate("09A", "door"), gate("01A", "hall"), gate("03A", "pool"), gate("08A", "gym")};
    server->stateChanged();
    ASSERT_TRUE(eventually([this] { return model->pairs().size() == 4; }));
    EXPECT_EQ(window->gates()->panel().ASelectedIndex(), 2);
    EXPECT_EQ(window->gates()->openA()->text(), QStringLiteral("Open 03A (pool, in) (F7)"));
    club.State[QStringLiteral("gates")] = QJsonArray{gate("09A", "door"), gate("08A", "R&D")};
    server->stateChanged();
    ASSERT_TRUE(eventually([this] { return model->pairs().size() == 2; }));
    EXPECT_EQ(window->gates()->panel().ASelectedIndex(), 0); // the chosen one is gone
    window->gates()->selectNext(1);
    EXPECT_EQ(window->gates()->openA()->text(), QStringLiteral("Open 08A (R&&D, in) (F7)")); // no key
    EXPECT_TRUE(window->gates()->openA()->toolTip().contains(QStringLiteral("R&amp;D")));
}

TEST_F(DeskWindow, ALongNameMakesNoWindowWider)
{
    ASSERT_TRUE(connects());
    const int before = window->minimumSizeHint().width();
    const QString name(2'000, u'W');
    club.Trouble = name;
    club.State[QStringLiteral("gates")] = QJsonArray{QJsonObject{{QStringLiteral("address"), name}}};
    server->stateChanged();
    ASSERT_TRUE(eventually([this] { return model->pairs().size() == 1; }));
    window->askToOpen(name);
    answer(QStringLiteral("guest"));
    ASSERT_TRUE(eventually([this] { return !window->answer()->text().isEmpty(); }));
    QCoreApplication::processEvents(); // the layouts hear of it
    EXPECT_EQ(window->minimumSizeHint().width(), before);
    EXPECT_LE(window->statusBar()->minimumSizeHint().width(), before);
    EXPECT_TRUE(window->answer()->toolTip().contains(name));
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
    EXPECT_EQ(said(), QStringLiteral("Gate 01A was not opened: hall is not open: gone"));
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
    tellPass(R"({"began": "a", "card": "17", "gate": "03A", "opened": true, "ending": "timed out",
        "ended": "c"})");
    ASSERT_TRUE(eventually([this] { return model->passes().size() == 2; }));
    const TGatePair pool{{}, QStringLiteral("03A"), {}};
    EXPECT_EQ(model->stateOf(pool).look, TGateLook::Refused); // an earlier one ends
    tellPass(R"({"began": "d", "card": "18", "gate": "03A", "opened": true})");
    ASSERT_TRUE(eventually([this] { return model->passes().size() == 3; }));
    EXPECT_EQ(model->stateOf(pool).look, TGateLook::Free);
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

TEST_F(DeskWindow, TheLogFollowsAlsoWithLessRoom)
{
    ASSERT_TRUE(connects());
    QTreeView* const lines = window->logView()->lines();
    QScrollBar* const bar = lines->verticalScrollBar();
    int told = 0;
    const auto tell = [&](int count) {
        for (int i = 0; i < count; ++i) {
            model->log().add({TLogLevel::Info, {}, QString::number(++told)});
        }
        QCoreApplication::processEvents();
    };
    const auto last = [&] {
        const QModelIndex row = lines->model()->index(lines->model()->rowCount() - 1, 0);
        return lines->viewport()->rect().contains(lines->visualRect(row).center());
    };
    tell(200);
    ASSERT_TRUE(eventually(last));
    for (const int lost : {150, 40, -90, 60}) { // the banner comes and goes, the window is made smaller
        window->resize(window->width(), window->height() - lost);
        tell(1);
        EXPECT_TRUE(eventually(last)) << lost;
    }
    bar->setValue(bar->maximum() / 2);
    const int where = bar->value();
    tell(10);
    window->resize(window->width(), window->height() - 30);
    tell(10);
    EXPECT_EQ(bar->value(), where); // somebody reads
    bar->setValue(bar->maximum());
    tell(10);
    EXPECT_TRUE(eventually(last));
}

TEST_F(DeskWindow, ToolTipsCommandNothing)
{
    ASSERT_TRUE(connects());
    tellPass(R"({"began": "b", "card": "17", "name": "<b>A</b>", "gate": "01A", "opened": true,
        "note": "<img src=x>"})");
    server->tell(json(R"({"event": "line", "text": "<u>line</u>", "time": "<i>"})"));
    club.State[QStringLiteral("troubles")] = QJsonArray{QStringLiteral("<s>no paper</s>")};
    server->stateChanged();
    QTreeWidget* const tree = window->equipment()->tree();
    ASSERT_TRUE(eventually([&] {
        return tree->topLevelItem(0) != nullptr &&
               tree->topLevelItem(0)->text(0) == QStringLiteral("Attention");
    }));
    const QTreeWidgetItem* const pass = window->passing()->list()->topLevelItem(0);
    const QAbstractItemModel* const lines = window->logView()->lines()->model();
    const QModelIndex line = lines->index(lines->rowCount() - 1, 0);
    for (const QString& tip : {pass->toolTip(2), pass->toolTip(3), line.data(Qt::ToolTipRole).toString(),
                               line.siblingAtColumn(1).data(Qt::ToolTipRole).toString(),
                               tree->topLevelItem(0)->child(0)->toolTip(0)}) {
        EXPECT_TRUE(tip.contains(QStringLiteral("&lt;"))) << tip.toStdString();
        EXPECT_EQ(tip.count(u'<'), 2) << tip.toStdString();
    }
}

TEST_F(DeskWindow, WhoWalksThroughTheEquipmentStaysThere)
{
    for (int i = 0; i < 60; ++i) {
        QJsonArray boards = club.State[QStringLiteral("boards")].toArray();
        boards.append(QJsonObject{{QStringLiteral("address"), QStringLiteral("b%1").arg(i)},
                                  {QStringLiteral("answering"), true}});
        club.State[QStringLiteral("boards")] = boards;
    }
    ASSERT_TRUE(connects());
    QTreeWidget* const tree = window->equipment()->tree();
    const auto section = [&](const char* title) -> QTreeWidgetItem* {
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            if (tree->topLevelItem(i)->text(0) == QLatin1String(title)) {
                return tree->topLevelItem(i);
            }
        }
        return nullptr;
    };
    ASSERT_NE(section("Boards"), nullptr);
    QTreeWidgetItem* const chosen = section("Boards")->child(30);
    tree->setCurrentItem(chosen);
    section("Lines")->setExpanded(false);
    tree->scrollToItem(section("Boards")->child(20), QAbstractItemView::PositionAtTop);
    QTreeWidgetItem* const top = tree->itemAt(0, 0);
    ASSERT_GT(tree->verticalScrollBar()->value(), 0);

    club.State[QStringLiteral("troubles")] = QJsonArray{QStringLiteral("no paper"), QStringLiteral("no ink")};
    server->stateChanged();
    ASSERT_TRUE(eventually([&] { return section("Attention") != nullptr; }));
    EXPECT_EQ(tree->topLevelItem(0), section("Attention"));
    EXPECT_TRUE(section("Attention")->isExpanded());
    EXPECT_EQ(tree->currentItem(), chosen);
    EXPECT_EQ(tree->itemAt(0, 0), top);
    EXPECT_FALSE(section("Lines")->isExpanded());

    QTreeWidgetItem* const ink = section("Attention")->child(1);
    club.State[QStringLiteral("troubles")] = QJsonArray{QStringLiteral("no ink")};
    server->stateChanged();
    ASSERT_TRUE(eventually([&] { return section("Attention")->childCount() == 1; }));
    EXPECT_EQ(section("Attention")->child(0), ink);
    club.State.remove(QStringLiteral("troubles"));
    server->stateChanged();
    ASSERT_TRUE(eventually([&] { return section("Attention") == nullptr; }));
    EXPECT_EQ(tree->currentItem(), chosen);
    EXPECT_EQ(tree->itemAt(0, 0), top);
}

TEST_F(DeskWindow, HowManyAreInsideMayNotBeKnown)
{
    ASSERT_TRUE(connects());
    const auto shows = [this](const char* text) {
        return eventually([&] {
            const auto labels = window->statusBar()->findChildren<QLabel*>();
            return std::any_of(labels.begin(), labels.end(),
                               [&](const QLabel* label) { return label->text() == QLatin1String(text); });
        });
    };
    EXPECT_TRUE(shows("Inside: 12"));
    club.State[QStringLiteral("inside")] = QJsonValue(QJsonValue::Null);
    server->stateChanged();
    EXPECT_TRUE(shows("Inside: ?"));
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
    writeGates("[Gates]\nItemsCount=3\nGateA1=03A\nCaption1=Pool side\nGateA2=77Z\nCaption2=Far\n"
               "GateA3=03A\nGateB3=02A\nCaption3=Both\n");
    ASSERT_TRUE(connects());
    EXPECT_FALSE(window->gates()->note()->isVisible());
    EXPECT_EQ(caption(0), QStringLiteral("Pool side [free]"));
    EXPECT_EQ(caption(1), QStringLiteral("Far [not in this club]"));
    EXPECT_EQ(caption(2), QStringLiteral("Both [free]")); // its first address is also an earlier one's
    EXPECT_TRUE(window->gates()->openA()->isEnabled());
    window->gates()->selectNext(1);
    EXPECT_FALSE(window->gates()->openA()->isEnabled());
    QTest::mouseClick(panelButton(1, 0), Qt::LeftButton);
    EXPECT_EQ(window->question(), nullptr);
    EXPECT_EQ(said(), QStringLiteral("Gate 77Z is not in this club."));
    window->answer()->clear();
    QTest::keyClick(window.get(), Qt::Key_F7);
    EXPECT_EQ(said(), QStringLiteral("Gate 77Z is not in this club."));
}

TEST_F(DeskWindow, AFileWithoutGatesIsToldOf)
{
    writeGates("[Other]\nItemsCount=1\nGateA1=03A\n");
    EXPECT_TRUE(window->gates()->note()->isVisible());
    EXPECT_EQ(window->gates()->note()->text(),
              QStringLiteral("There are no gates in the section \"Gates\" of %1.").arg(FGatesFile));
    TMainWindow::TOptions options;
    options.gatesFile = FFolder.path(); // no file
    open(options);
    EXPECT_TRUE(window->gates()->note()->isVisible());
    EXPECT_EQ(window->gates()->note()->text(), QStringLiteral("%1 cannot be read.").arg(FFolder.path()));
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
