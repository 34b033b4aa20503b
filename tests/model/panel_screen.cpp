#include "model/panel_screen.h"

#include "model/kit/step.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPushButton>

namespace tnv5::panel::model {

namespace {

QList<QFrame*> panelsOf(QScrollArea& box)
{
    return box.widget() == nullptr
               ? QList<QFrame*>()
               : box.widget()->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly);
}

QString drawn(const QRect& rect)
{
    return QStringLiteral("%1,%2 %3x%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

/// The parts of a panel, as the order of its children says.
struct TParts
{
    explicit TParts(const QFrame* panel)
    {
        const auto children = panel->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly);
        left = children.value(0);
        right = children.value(1);
        centre = children.value(2);
        a = left->findChild<QPushButton*>();
        b = right->findChild<QPushButton*>();
        const auto labels = centre->findChildren<QLabel*>();
        caption = labels.value(0);
        image = labels.value(1);
    }
    QFrame *left, *right, *centre;
    QPushButton *a, *b;
    QLabel *caption, *image;
};

QString drawn(const QPushButton* button)
{
    const int glyph = button->icon().isNull() ? 0 : button->iconSize().width();
    return drawn(button->geometry()) + (button->isEnabled() ? " on " : " off ") + QString::number(glyph);
}

void press(QWidget* widget, QPointF at)
{
    const QPointer<QWidget> guard = widget;
    QMouseEvent down(QEvent::MouseButtonPress, at, widget->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                     {});
    QCoreApplication::sendEvent(widget, &down);
    QMouseEvent up(QEvent::MouseButtonRelease, at, widget->mapToGlobal(at), Qt::LeftButton, {}, {});
    if (guard) {
        QCoreApplication::sendEvent(widget, &up);
    }
}

void pressSpace(QWidget* widget)
{
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Space, {});
    QCoreApplication::sendEvent(widget, &down);
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_Space, {});
    QCoreApplication::sendEvent(widget, &up);
}

/// A quarter, halves to the even neighbour: told in eighths.
int quarter(int size)
{
    const int whole = size / 4;
    switch (size % 8) {
    case 3:
    case 6:
    case 7:
        return whole + 1;
    default:
        return whole;
    }
}

} // namespace

QStringList screen(QScrollArea& box, int& numbered)
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    QStringList numbers;
    for (QFrame* const panel : panelsOf(box)) {
        if (panel->objectName().isEmpty()) {
            panel->setObjectName(QString::number(++numbered));
        }
        numbers << panel->objectName();
    }
    QStringList lines{"made " + numbers.join(u' ')};
    const QLayout* const layout = box.widget() != nullptr ? box.widget()->layout() : nullptr;
    for (int i = 0; layout != nullptr && i < layout->count(); ++i) {
        const auto* const panel = qobject_cast<QFrame*>(layout->itemAt(i)->widget());
        const TParts parts(panel);
        const bool line =
            panel->frameStyle() == (int(QFrame::Box) | int(QFrame::Plain)) && panel->frameWidth() == 1;
        lines << QStringLiteral("%1 at %2").arg(panel->objectName(), drawn(panel->geometry())) +
                     (line ? " line" : "") + (panel->isVisible() ? "" : " hidden");
        lines << "  " + drawn(parts.left->geometry()) + " with " + drawn(parts.a);
        lines << "  " + drawn(parts.right->geometry()) + " with " + drawn(parts.b);
        lines << "  " + drawn(parts.centre->geometry()) + " with " + drawn(parts.caption->geometry()) +
                     " and " + drawn(parts.image->geometry());
        lines << "  " + modelkit::shown(parts.caption->text()) + " and " +
                     QString::number(parts.image->pixmap().width());
    }
    return lines;
}

QStringList screen(const TModelBox& box, int& numbered)
{
    QStringList numbers;
    for (const auto& each : box.asMade) {
        if (each->number == 0) {
            each->number = ++numbered;
        }
        numbers << QString::number(each->number);
    }
    QStringList lines{"made " + numbers.join(u' ')};
    int y = 0;
    for (const auto& each : box.fromTop) {
        const int width = kBoxSize.width() - 2 * kFrame;
        const int height = each->size + 5;
        const int line = each->line ? 1 : 0;
        const int inner = height - 2 * line;
        const int side = qMax(0, each->size);
        const int extent = qMax(0, each->size - 1);
        const int centre = width - 2 * side - 2 * line;
        const int caption = quarter(side);
        const auto button = [&](bool enabled, int glyph) {
            return " with " + drawn(QRect(0, 0, extent, extent)) + (enabled ? " on " : " off ") +
                   QString::number(glyph);
        };
        lines << QStringLiteral("%1 at %2").arg(each->number).arg(drawn(QRect(0, y, width, height))) +
                     (each->line ? " line" : "");
        lines << "  " + drawn(QRect(line, line, side, inner)) + button(each->canA, each->glyphA);
        lines << "  " + drawn(QRect(width - line - side, line, side, inner)) +
                     button(each->canB, each->glyphB);
        lines << "  " + drawn(QRect(line + side, line, centre, inner)) + " with " +
                     drawn(QRect(0, 0, centre, caption)) + " and " +
                     drawn(QRect(0, caption, centre, inner - caption));
        lines << "  " + modelkit::shown(each->text) + " and " + QString::number(each->picture);
        y += height;
    }
    return lines;
}

void clickOn(QScrollArea& box, int index, int which, int way)
{
    const QList<QFrame*> panels = panelsOf(box);
    const QFrame* const panel = panels.value(panels.size() - 1 - index);
    if (panel == nullptr) {
        return;
    }
    const TParts parts(panel);
    QPushButton* const button = which == 0 ? parts.a : parts.b;
    QWidget* const widget = which == 2 ? static_cast<QWidget*>(parts.image) : button;
    if (way == 0 || which == 2) {
        press(widget, QPointF(0, 0));
    } else if (way == 1) {
        pressSpace(button);
    } else {
        button->click();
    }
}

void clickOn(TModelBox& box, TModelPanel* panel, int index, int which, int way)
{
    if (index < 0 || index >= int(box.asMade.size())) {
        return;
    }
    const auto clicked = box.asMade[box.asMade.size() - 1 - std::size_t(index)];
    const bool nothingToHit = way == 0 && which != 2 && clicked->size <= 1;
    if (either<"a click by mouse into nothing", "a click">(nothingToHit)) {
        return;
    }
    if (panel != nullptr) {
        panel->clickOnScreen(clicked, which);
    }
}

} // namespace tnv5::panel::model
