#include "tnv5/panel/gate_panel.h"

#include "tnv5/common/text.h"
#include "tnv5/panel/image_list.h"
#include "tnv5/panel/panel_sizes.h"
#include "tnv5/panel/turn_styler_item.h"
#include "tnv5/platform/errors.h"

#include <QBoxLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <functional>

namespace tnv5::panel {

namespace {

constexpr QRgb kCaptionColour = qRgb(0x8A, 0x8A, 0x8A);
constexpr QRgb kCaptionFontColour = qRgb(0xFC, 0xFC, 0xFC);
constexpr int kLineWidth = 1;

/// Shows a picture and tells when it is clicked.
class TStateImage final : public QLabel
{
public:
    using QLabel::QLabel;
    std::function<void()> OnClick;

protected:
    void mousePressEvent(QMouseEvent* event) override { FPressed = event->button() == Qt::LeftButton; }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        const bool released = event->button() == Qt::LeftButton && std::exchange(FPressed, false);
        if (released && OnClick && rect().contains(event->position().toPoint())) {
            const auto click = OnClick; // this may be gone when it returns
            click();
        }
    }

private:
    bool FPressed = false;
};

QFrame* structuralPanel(QWidget* parent)
{
    auto* const panel = new QFrame(parent);
    panel->setFrameStyle(QFrame::NoFrame);
    return panel;
}

template <class Layout>
Layout* plainLayout(QWidget* panel)
{
    auto* const layout = new Layout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

QFrame* sidePanel(QFrame* parent, int size)
{
    QFrame* const panel = structuralPanel(parent);
    panel->setFixedWidth(sideWidth(size));
    return panel;
}

QPushButton* directionButton(QFrame* panel, const QString& address, const TGateLook& look, int glyph)
{
    auto* const button = new QPushButton(panel);
    const int extent = buttonExtent(look.ButtonSize);
    button->setGeometry(0, 0, extent, extent);
    button->setFocusPolicy(Qt::ClickFocus); // no tab stop
    button->setAutoDefault(false);
    button->setEnabled(!common::Trim(address).isEmpty());
    if (look.ImagesBtn != nullptr) {
        const QImage picture = look.ImagesBtn->GetBitmap(glyph);
        button->setIcon(QIcon(QPixmap::fromImage(picture)));
        button->setIconSize(picture.deviceIndependentSize().toSize());
    }
    return button;
}

QLabel* captionPanel(QFrame* parent, int size, const QString& caption)
{
    auto* const panel = new QLabel(parent);
    panel->setFrameStyle(QFrame::NoFrame);
    panel->setFixedHeight(captionHeight(size));
    panel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // a long text widens nothing
    panel->setAlignment(Qt::AlignCenter);
    QPalette colours = panel->palette();
    colours.setColor(QPalette::Window, QColor(kCaptionColour));
    colours.setColor(QPalette::WindowText, QColor(kCaptionFontColour));
    panel->setPalette(colours);
    panel->setAutoFillBackground(true);
    panel->setTextFormat(Qt::PlainText);
    panel->setText(caption);
    return panel;
}

TStateImage* stateImage(QFrame* parent, const TGateLook& look)
{
    auto* const image = new TStateImage(parent);
    image->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored); // nor does a large picture
    image->setAlignment(Qt::AlignCenter);
    if (look.Images != nullptr) { // -1, as any number without a picture, shows none
        image->setPixmap(QPixmap::fromImage(look.Images->GetBitmap(look.DefaultImage)));
    }
    return image;
}

} // namespace

/// What the controls know of their gate, as long as there is one, and how many clicks are under way.
struct TGatePanel::TClicks
{
    using THandler = void (TTurnStylerItem::*)(QObject*);

    static std::function<void()> to(const std::shared_ptr<TClicks>& clicks, THandler handler, QObject* sender)
    {
        return [clicks, handler, sender] {
            if (clicks->item == nullptr) {
                return;
            }
            const auto kept = clicks; // this function may be gone when the handler returns
            ++kept->underWay;
            platform::guarded([&kept, handler, sender] { (kept->item->*handler)(sender); });
            --kept->underWay;
        };
    }

    TTurnStylerItem* item;
    int underWay = 0;
};

TGatePanel::TGatePanel(TTurnStylerItem& item, QWidget* parent, const TGateLook& look)
    : FClicks(std::make_shared<TClicks>(TClicks{&item}))
{
    QFrame* const main = structuralPanel(parent);
    FMainPanel = main;
    main->setFixedHeight(mainHeight(look.ButtonSize));

    QFrame* const left = sidePanel(main, look.ButtonSize);
    auto* const buttonA = directionButton(left, item.GateA(), look, 0);
    QFrame* const right = sidePanel(main, look.ButtonSize);
    auto* const buttonB = directionButton(right, item.GateB(), look, 1);
    QFrame* const centre = structuralPanel(main);
    FCaptionPanel = captionPanel(centre, look.ButtonSize, item.Caption());
    TStateImage* const image = stateImage(centre, look);
    FStateImage = image;

    auto* const across = plainLayout<QHBoxLayout>(main);
    across->addWidget(left);
    across->addWidget(centre, 1);
    across->addWidget(right);
    auto* const down = plainLayout<QVBoxLayout>(centre);
    down->addWidget(FCaptionPanel);
    down->addWidget(FStateImage, 1);

    QObject::connect(buttonA, &QPushButton::clicked, buttonA,
                     TClicks::to(FClicks, &TTurnStylerItem::GateABtnclick, buttonA));
    QObject::connect(buttonB, &QPushButton::clicked, buttonB,
                     TClicks::to(FClicks, &TTurnStylerItem::GateBBtnclick, buttonB));
    image->OnClick = TClicks::to(FClicks, &TTurnStylerItem::imgBtnclick, image);
}

TGatePanel::~TGatePanel()
{
    retire();
    if (FMainPanel && FClicks->underWay > 0) {
        FMainPanel->hide();
        FMainPanel->setParent(nullptr);
        FMainPanel->deleteLater();
    } else {
        delete FMainPanel;
    }
}

void TGatePanel::setBorder(bool single) const
{
    if (FMainPanel) {
        FMainPanel->setFrameStyle(single ? int(QFrame::Box) | int(QFrame::Plain) : int(QFrame::NoFrame));
        FMainPanel->setLineWidth(kLineWidth);
    }
}

void TGatePanel::showState(const QString& caption, const QImage& picture) const
{
    if (FCaptionPanel) {
        FCaptionPanel->setText(caption);
    }
    if (FStateImage) {
        FStateImage->setPixmap(QPixmap::fromImage(picture));
    }
}

void TGatePanel::retire()
{
    FClicks->item = nullptr;
}

void TGatePanel::layOut() const
{
    if (FMainPanel) {
        FMainPanel->layout()->activate();
        FCaptionPanel->parentWidget()->layout()->activate();
    }
}

} // namespace tnv5::panel
