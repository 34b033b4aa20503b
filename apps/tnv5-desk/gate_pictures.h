#pragma once

#include "apps/tnv5-desk/gate_pairs.h"
#include "tnv5/panel/image_list.h"

namespace tnv5::desk {

/// Pictures of the gate panel, drawn in the colours of the theme: states by `TGateLook`, which differ in
/// shape as well as in colour.
/// @param size height in logical pixels @param ratio pixels of the screen for each of them
void fillStates(panel::TImageList& list, int size, double ratio);

/// Glyphs of the buttons: way in, way out.
void fillGlyphs(panel::TImageList& list, int size, double ratio);

} // namespace tnv5::desk
