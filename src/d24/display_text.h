#pragma once

#include <QString>
#include <array>

namespace tnv5::d24 {

/// What the display of a networked controller shows about a card: up to four lines, a light and a sound. It
/// becomes the text that the component expects from the host, "|line 1|line 2|line 3|line 4|flags|".
///
///     mess = TDisplayText("Anna Berg", "Balance 12.50").light().text(); // "|Anna Berg|Balance 12.50|||L|"
///
/// Any text is safe: what would end a line or the command (bars, control characters) becomes a blank. How
/// much of a line is seen is the display's; characters that the code page lacks are shown as "?".
class TDisplayText
{
public:
    static constexpr int kLines = 4;

    /// An empty text leaves the display as it is.
    TDisplayText() = default;
    explicit TDisplayText(const QString& line1, const QString& line2 = {}, const QString& line3 = {},
                          const QString& line4 = {});

    /// The display lights up.
    TDisplayText& light();
    /// It makes a sound.
    TDisplayText& sound();

    bool isEmpty() const;
    /// Empty when nothing is to be shown.
    QString text() const;

private:
    std::array<QString, kLines> FLines;
    QString FFlags;
};

} // namespace tnv5::d24
