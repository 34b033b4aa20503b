#pragma once

#include <algorithm>

/// Sizes of a gate's controls in pixels, from the size of its buttons.
namespace tnv5::panel {

constexpr int kMostPixels = 16'777'215; ///< a widget is never larger

/// A size that a widget can have.
constexpr int pixels(long long size)
{
    return static_cast<int>(std::clamp<long long>(size, 0, kMostPixels));
}

constexpr int mainHeight(int buttonSize)
{
    return pixels(buttonSize + 5LL);
}

/// Of the panels at both sides.
constexpr int sideWidth(int buttonSize)
{
    return pixels(buttonSize);
}

/// Width and height of a button.
constexpr int buttonExtent(int buttonSize)
{
    return pixels(buttonSize - 1LL);
}

/// A quarter, rounded; halves go to the even neighbour.
constexpr int captionHeight(int buttonSize)
{
    const int size = pixels(buttonSize);
    const int quarter = size / 4;
    const int rest = size % 4;
    const bool up = rest == 3 || (rest == 2 && quarter % 2 != 0);
    return quarter + (up ? 1 : 0);
}

} // namespace tnv5::panel
