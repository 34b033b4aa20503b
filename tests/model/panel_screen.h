#pragma once

#include "model/panel_model.h"
#include "tnv5/panel/turn_styler.h"

#include <QStringList>

namespace tnv5::panel::model {

constexpr QSize kBoxSize{400, 300};
constexpr int kFrame = 1; // the box's own line

/// What stands in a box from the top: places, sizes, texts, pictures. New panels get their numbers first.
/// @param numbered how many have got one
QStringList screen(QScrollArea& box, int& numbered);
QStringList screen(const TModelBox& box, int& numbered);

/// A click on the panel that was made as the `index`th last of those that are there. `which`: 0 or 1, a
/// button; 2, the picture. `way`: 0 by mouse, 1 by the space key, 2 by program. Nothing when there is no such
/// panel.
void clickOn(QScrollArea& box, int index, int which, int way);
void clickOn(TModelBox& box, TModelPanel* panel, int index, int which, int way);

} // namespace tnv5::panel::model
