#include "apps/tnv5-desk/main_window.h"

#include "apps/tnv5-desk/plain_text.h"
#include "apps/tnv5-desk/words.h"

#include <QMenuBar>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QTime>
#include <QVBoxLayout>

namespace tnv5::desk {

namespace {

constexpr QSize kLetters(190, 46); // of the window at first, in letters and lines

} // namespace

TMainWindow::TMainWindow(TDeskModel& desk, const TOptions& options)
    : FDesk(desk),
      FWho(options.who),
      FBanner(new QLabel(this)),
      FGates(new TGateView(desk, options.gatesFile, this)),
      FPassing(new TPassingView(desk, this)),
      FEquipment(new TEquipmentView(desk, this)),
      FLog(new TLogView(desk.log(), this)),
      FAnswer(new QLabel(this)),
      FNumbers(new QLabel(this))
{
    build();
    addActions();
    connect(FGates, &TGateView::openAsked, this, &TMainWindow::askToOpen);
    connect(&FDesk, &TDeskModel::liveChanged, this, [this] { showConnection(); });
    connect(&FDesk, &TDeskModel::stateChanged, this, [this] { showNumbers(); });
    connect(&FDesk, &TDeskModel::opened, this, [this](TOpened what, const QString& text) {
        showAnswer(text, what == TOpened::Given ? TMood::Good : TMood::Bad);
    });
    showConnection();
    showNumbers();
}

void TMainWindow::build()
{
    FBanner->setWordWrap(true);
    FBanner->setTextFormat(Qt::PlainText);
    FBanner->setMargin(fontMetrics().height() / 2);
    FBanner->setAutoFillBackground(true);
    QPalette colours = FBanner->palette();
    colours.setColor(QPalette::Window, QColor(0xa8201a));
    colours.setColor(QPalette::WindowText, Qt::white);
    FBanner->setPalette(colours);

    auto* const top = new QSplitter(Qt::Horizontal, this);
    top->addWidget(FGates);
    top->addWidget(FPassing);
    top->addWidget(FEquipment);
    top->setStretchFactor(0, 3);
    top->setStretchFactor(1, 5);
    top->setStretchFactor(2, 4);
    auto* const all = new QSplitter(Qt::Vertical, this);
    all->addWidget(top);
    all->addWidget(FLog);
    all->setStretchFactor(0, 5);
    all->setStretchFactor(1, 2);
    for (QSplitter* const splitter : {top, all}) {
        splitter->setChildrenCollapsible(false);
        splitter->setHandleWidth(fontMetrics().height() / 2);
    }

    auto* const middle = new QWidget(this);
    auto* const layout = new QVBoxLayout(middle);
    layout->addWidget(FBanner);
    layout->addWidget(all, 1);
    setCentralWidget(middle);
    FAnswer->setTextFormat(Qt::PlainText);
    for (QLabel* const label : {FBanner, FAnswer}) { // the longest text makes no window wider
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
    statusBar()->addWidget(FAnswer, 1);
    statusBar()->addPermanentWidget(FNumbers);
    const QSize wanted(fontMetrics().averageCharWidth() * kLetters.width(),
                       fontMetrics().lineSpacing() * kLetters.height());
    resize(wanted.boundedTo(screen()->availableSize()));
}

QAction* TMainWindow::addKey(QMenu* menu, const QString& text, const QKeySequence& key,
                             const std::function<void()>& act)
{
    QAction* const action = menu->addAction(text);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, act);
    return action;
}

void TMainWindow::addActions()
{
    QMenu* const gate = menuBar()->addMenu(tr("G&ate"));
    addKey(gate, tr("&Next gate"), QKeySequence(Qt::CTRL | Qt::Key_Down), [this] { FGates->selectNext(1); });
    addKey(gate, tr("&Previous gate"), QKeySequence(Qt::CTRL | Qt::Key_Up),
           [this] { FGates->selectNext(-1); });
    gate->addSeparator();
    addKey(gate, tr("Open the way &in …"), QKeySequence(Qt::Key_F7), [this] { FGates->askA(); });
    addKey(gate, tr("Open the way &out …"), QKeySequence(Qt::Key_F8), [this] { FGates->askB(); });
    QMenu* const view = menuBar()->addMenu(tr("&View"));
    addKey(view, tr("&Search in the log"), QKeySequence(Qt::CTRL | Qt::Key_F), [this] {
        FLog->search()->setFocus(Qt::ShortcutFocusReason);
        FLog->search()->selectAll();
    });
    addKey(view, tr("Next part of the &window"), QKeySequence(Qt::Key_F6), [this] { nextPart(); });
    view->addSeparator();
    addKey(view, tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { close(); });
    auto* const escape = new QShortcut(Qt::Key_Escape, FLog);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, [this] { FLog->search()->clear(); });
}

// Gates, passes, equipment, log, and again.
void TMainWindow::nextPart()
{
    const QList<QWidget*> parts = {FGates, FPassing, FEquipment, FLog};
    const QList<QWidget*> firsts = {FGates->box(), FPassing->list(), FEquipment->tree(), FLog->search()};
    qsizetype now = -1;
    for (qsizetype index = 0; index < parts.size(); ++index) {
        if (focusWidget() != nullptr && (parts[index]->isAncestorOf(focusWidget()))) {
            now = index;
        }
    }
    firsts[(now + 1) % firsts.size()]->setFocus(Qt::ShortcutFocusReason);
}

void TMainWindow::showConnection()
{
    FBanner->setVisible(!FDesk.live());
    const QString what =
        tr("Not connected to the host. Nothing here is live; gates work on, but cannot be opened from "
           "the desk. The desk connects again by itself.");
    FBanner->setText(FDesk.whyNot().isEmpty() ? what : what + u'\n' + FDesk.whyNot());
    setWindowTitle(FDesk.live() ? tr("%1 – desk").arg(FDesk.state().club) : tr("Desk – not connected"));
    if (!FDesk.live() && FQuestion) {
        FQuestion->reject();
    }
}

void TMainWindow::showNumbers()
{
    const std::optional<qint64> known = FDesk.state().inside;
    const QString inside = known ? QString::number(*known) : QStringLiteral("?");
    FNumbers->setText(FDesk.live() ? tr("Inside: %1").arg(inside) : QString());
}

void TMainWindow::showAnswer(const QString& text, TMood mood)
{
    colour(FAnswer, mood);
    FAnswer->setText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss  ")) + text);
    FAnswer->setToolTip(tipText(FAnswer->text()));
}

void TMainWindow::askToOpen(const QString& gate)
{
    const std::optional<TGateState> known = FDesk.gate(gate);
    if (!FDesk.live() || FQuestion) {
        return;
    }
    if (!known) {
        showAnswer(tr("Gate %1 is not in this club.").arg(gate), TMood::Bad);
        return;
    }
    FQuestion = new TOpenDialog(TWords::gate(gate, known->zone, known->way), FWho, this);
    FQuestion->setAttribute(Qt::WA_DeleteOnClose);
    connect(FQuestion, &QDialog::accepted, this, [this, gate, dialog = FQuestion.data()] {
        FWho = dialog->who();
        FAnswer->clear(); // that is about the one before
        FAnswer->setToolTip({});
        FDesk.open(gate, FWho, dialog->reason());
    });
    FQuestion->open();
}

} // namespace tnv5::desk
