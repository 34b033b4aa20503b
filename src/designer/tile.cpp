#include "tnv5/designer/tile.h"

#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <utility>

/// The pictures are in a static library, whose resources nobody asks for by themselves. Not in a namespace;
/// the macro forbids it.
static void useIcons()
{
    Q_INIT_RESOURCE(tnv5_tiles);
}

namespace tnv5::designer {

namespace {

// pixels
constexpr int kWidth = 168;
constexpr int kHeight = 32;
constexpr int kIcon = 24;
constexpr int kMargin = 4;

} // namespace

TTile::TTile(std::unique_ptr<platform::TComponent> AComponent, QWidget* AParent)
    : QWidget(AParent), FComponent(AComponent.get()), FTitle(bareName(*AComponent->metaObject()))
{
    setFixedSize(kWidth, kHeight);
    setToolTip(FTitle);
    if (!AComponent->Designing()) {
        hide(); // also when the form is shown
    }
    AComponent.release()->setParent(this);
}

// Before the widget is taken down: the component's last events find a whole tile.
TTile::~TTile()
{
    delete FComponent;
}

QSize TTile::sizeHint() const
{
    return {kWidth, kHeight};
}

void TTile::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const QRect icon(kMargin, (kHeight - kIcon) / 2, kIcon, kIcon);
    if (FComponent) {
        tileIcon(*FComponent->metaObject()).paint(&painter, icon);
    }
    const QRect text = rect().adjusted(icon.right() + 1 + kMargin, 0, -kMargin, 0);
    style()->drawItemText(&painter, text, Qt::AlignVCenter | Qt::AlignLeft, palette(), isEnabled(),
                          fontMetrics().elidedText(FTitle, Qt::ElideRight, text.width()),
                          QPalette::WindowText);
}

TTile* createTile(const QString& className, QWidget* parent)
{
    const auto& classes = tileClasses();
    const auto found = std::find_if(classes.begin(), classes.end(), [&className](const TTileClass& tile) {
        return className == QLatin1String(tile.tile->className());
    });
    return found == classes.end() ? nullptr : found->create(parent);
}

QIcon tileIcon(const QMetaObject& component)
{
    useIcons();
    QIcon icon;
    for (const int pixels : {kIcon, 2 * kIcon}) { // for plain screens and for fine ones
        icon.addFile(
            QStringLiteral(":/tnv5/tiles/%1-%2.png").arg(bareName(component), QString::number(pixels)));
    }
    return icon;
}

QString bareName(const QMetaObject& meta)
{
    return QString::fromLatin1(meta.className()).section(QStringLiteral("::"), -1);
}

} // namespace tnv5::designer
