#pragma once

#include <QImage>
#include <QList>
#include <QObject>

namespace tnv5::panel {

/// Numbered pictures, which the host fills: the states of a gate, or the glyphs of its buttons.
///
///     TImageList states;
///     states.Add(QImage(":/closed.png")); // picture 0
class TImageList : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// @return the picture's number
    int Add(const QImage& APicture);
    void Clear() { FPictures.clear(); }
    int Count() const { return static_cast<int>(FPictures.size()); }
    /// An empty picture for a number that there is not.
    QImage GetBitmap(int AIndex) const { return FPictures.value(AIndex); }

private:
    QList<QImage> FPictures;
};

} // namespace tnv5::panel
