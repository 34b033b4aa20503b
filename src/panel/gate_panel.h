#pragma once

#include "tnv5/panel/gate_desk.h"

#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <memory>

class QImage;

namespace tnv5::panel {

class TImageList;

/// What a gate's controls are built from.
struct TGateLook
{
    int ButtonSize = 0;
    const TImageList* Images = nullptr;
    const TImageList* ImagesBtn = nullptr;
    int DefaultImage = 0;
};

/// The controls of one gate.
///
///     +--------+--------------------------+--------+
///     | left   | caption                  | right  |
///     | button +--------------------------+ button |
///     |        | state picture            |        |
///     +--------+--------------------------+--------+
class TGatePanel final : public IGateView
{
public:
    /// Builds them inside `parent`.
    TGatePanel(TTurnStylerItem& item, QWidget* parent, const TGateLook& look);
    /// Frees them. While one of them is being clicked they only leave the box, and are freed soon after.
    ~TGatePanel() override;
    Q_DISABLE_COPY_MOVE(TGatePanel)

    QFrame* MainPanel() const override { return FMainPanel; }
    QLabel* CaptionPanel() const override { return FCaptionPanel; }
    QLabel* StateImage() const override { return FStateImage; }

    /// Lets a single line stand around the gate, or none.
    void setBorder(bool single) const;
    void showState(const QString& caption, const QImage& picture) const;
    /// Clicks do nothing any more.
    void retire();
    /// Puts the controls in their places at once, seen or not.
    void layOut() const;

private:
    struct TClicks;

    QPointer<QFrame> FMainPanel;
    QPointer<QLabel> FCaptionPanel;
    QPointer<QLabel> FStateImage;
    std::shared_ptr<TClicks> FClicks;
};

} // namespace tnv5::panel
