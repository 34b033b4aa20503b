#pragma once

#include <QImage>

namespace tnv5::desk {

/// A picture with its 256 most usual colours and no others: of a window it is as good, and its file a third
/// as large.
QImage smallPicture(const QImage& picture);

} // namespace tnv5::desk
