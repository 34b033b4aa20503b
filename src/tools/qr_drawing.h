#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>
#include <vector>

/// QR codes: from a text to what people and machines look at. Every drawing has the light margin of four
/// modules that readers need; a module is one millimetre in files.
namespace tnv5::tools {

/// The modules of a code, without margin.
struct TQrCode
{
    int Size = 0; ///< modules in a row
    std::vector<bool> Dark;

    /// Whether a module is dark; all outside the code are light.
    bool dark(int x, int y) const;
};

constexpr int kQrMargin = 4;           ///< light modules on each side
constexpr int kQrPixels = 8;           ///< of a module in `qrImage`
constexpr int kQrDotsPerMetre = 8'000; ///< so that a module is one millimetre wide

/// The smallest code that holds a text with error correction M (15 % may be dirty).
/// @throws platform::Exception when the text is empty or too long for any code
TQrCode qrCode(const QByteArray& text);

/// Lines for a terminal, two rows of modules in each, with colours of their own: readable on light and dark
/// ones.
QStringList qrForTerminal(const TQrCode& code);

/// Black on white, `kQrPixels` a module.
QImage qrImage(const TQrCode& code);

QByteArray qrSvg(const TQrCode& code);

} // namespace tnv5::tools
