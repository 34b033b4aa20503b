#pragma once

#include <QString>
#include <memory>

class QFrame;
class QLabel;

namespace tnv5::panel {

class TTurnStylerItem;

/// What a gate has on screen. The list and its items know no more of it, and need no widgets.
class IGateView
{
public:
    virtual ~IGateView(); ///< frees the controls

    /// Frame, caption and picture; none once the scroll box is gone.
    virtual QFrame* MainPanel() const = 0;
    virtual QLabel* CaptionPanel() const = 0;
    virtual QLabel* StateImage() const = 0;
};

/// Who shows the gates of a list, and hears of them.
class IGateDesk
{
public:
    /// A button of the gate was pressed; `AGate` is the address of its direction.
    virtual void directionClicked(TTurnStylerItem& item, const QString& AGate) = 0;
    virtual void pictureClicked(TTurnStylerItem& item) = 0;
    /// The gate is gone from the list, its controls stay where they are.
    virtual void abandoned(std::unique_ptr<IGateView> view) = 0;
    /// Gates of the list stand in another order.
    virtual void reordered() = 0;

protected:
    ~IGateDesk() = default;
};

} // namespace tnv5::panel
