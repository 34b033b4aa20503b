#include "tnv5/tools/qr_drawing.h"

#include "tnv5/platform/errors.h"

#include <memory>
#include <qrencode.h>

namespace tnv5::tools {

namespace {

// black on white out of the 256 colours, which themes leave alone
const QString kInk = QStringLiteral("\033[38;5;16;48;5;231m");
const QString kNoInk = QStringLiteral("\033[0m");

QChar halfBlock(bool top, bool bottom)
{
    if (top) {
        return bottom ? u'█' : u'▀';
    }
    return bottom ? u'▄' : u' ';
}

} // namespace

bool TQrCode::dark(int x, int y) const
{
    const auto at =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(Size) + static_cast<std::size_t>(x);
    return x >= 0 && y >= 0 && x < Size && y < Size && Dark[at];
}

TQrCode qrCode(const QByteArray& text)
{
    constexpr int kSmallestThatFits = 0;
    constexpr int kCaseMatters = 1;
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString(text.constData(), kSmallestThatFits, QR_ECLEVEL_M, QR_MODE_8, kCaseMatters),
        &QRcode_free);
    if (!code) {
        throw platform::Exception(QStringLiteral("No QR code can hold this text"));
    }
    TQrCode result;
    result.Size = code->width;
    result.Dark.reserve(static_cast<std::size_t>(code->width) * static_cast<std::size_t>(code->width));
    for (int i = 0; i < code->width * code->width; ++i) {
        result.Dark.push_back((code->data[i] & 1U) != 0); // the other bits tell what the module is for
    }
    return result;
}

QStringList qrForTerminal(const TQrCode& code)
{
    QStringList lines;
    for (int y = -kQrMargin; y < code.Size + kQrMargin; y += 2) {
        QString line = kInk;
        for (int x = -kQrMargin; x < code.Size + kQrMargin; ++x) {
            line += halfBlock(code.dark(x, y), code.dark(x, y + 1));
        }
        lines << line + kNoInk;
    }
    return lines;
}

QImage qrImage(const TQrCode& code)
{
    const int side = (code.Size + 2 * kQrMargin) * kQrPixels;
    QImage image(side, side, QImage::Format_Grayscale8);
    image.setDotsPerMeterX(kQrDotsPerMetre);
    image.setDotsPerMeterY(kQrDotsPerMetre);
    for (int y = 0; y < side; ++y) {
        uchar* pixel = image.scanLine(y);
        for (int x = 0; x < side; ++x) {
            *pixel++ = code.dark(x / kQrPixels - kQrMargin, y / kQrPixels - kQrMargin) ? 0 : 255;
        }
    }
    return image;
}

QByteArray qrSvg(const TQrCode& code)
{
    const QByteArray side = QByteArray::number(code.Size + 2 * kQrMargin);
    QByteArray svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                     side + "mm\" height=\"" + side + "mm\" viewBox=\"0 0 " + side + ' ' + side +
                     "\" shape-rendering=\"crispEdges\">\n"
                     "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n<path d=\"";
    for (int y = 0; y < code.Size; ++y) {
        for (int x = 0; x < code.Size; ++x) {
            if (code.dark(x, y)) {
                svg += 'M' + QByteArray::number(x + kQrMargin) + ' ' + QByteArray::number(y + kQrMargin) +
                       "h1v1h-1z";
            }
        }
    }
    return svg + "\" fill=\"#000\"/>\n</svg>\n";
}

} // namespace tnv5::tools
