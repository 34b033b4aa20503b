#include "tnv5/tools/qr_drawing.h"

#include "support/text_printers.h"
#include "tnv5/platform/errors.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

using namespace tnv5::tools;

const QByteArray kText = "O45931B4A9A54D107AFCD2FC67ED244D9S";

/// Three modules a side: what can be told apart by eye.
TQrCode smallCode()
{
    return {3, {true, false, true, false, true, false, true, true, false}};
}

TEST(QrCode, OfACoffeeTextIs25ModulesWide)
{
    const TQrCode code = qrCode(kText);
    EXPECT_EQ(code.Size, 25); // the second smallest code holds 38 letters and digits
    EXPECT_EQ(code.Dark.size(), 625U);
}

TEST(QrCode, HasItsThreeFinders)
{
    const TQrCode code = qrCode(kText);
    const auto finderAt = [&](int left, int top) {
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 7; ++x) {
                const int ring = std::max(std::abs(x - 3), std::abs(y - 3));
                if (code.dark(left + x, top + y) != (ring != 2)) {
                    return false;
                }
            }
        }
        return true;
    };
    EXPECT_TRUE(finderAt(0, 0));
    EXPECT_TRUE(finderAt(18, 0));
    EXPECT_TRUE(finderAt(0, 18));
    EXPECT_FALSE(finderAt(18, 18));
}

TEST(QrCode, TextsThatNoCodeHoldsAreRefused)
{
    EXPECT_THROW(qrCode(QByteArray()), tnv5::platform::Exception);
    EXPECT_THROW(qrCode(QByteArray(10'000, 'x')), tnv5::platform::Exception);
}

TEST(QrCode, OutsideAllIsLight)
{
    const TQrCode code = smallCode();
    EXPECT_TRUE(code.dark(0, 0));
    EXPECT_TRUE(code.dark(1, 2));
    EXPECT_FALSE(code.dark(1, 0));
    EXPECT_FALSE(code.dark(2, 1));
    for (const auto& [x, y] : {std::pair(-1, 0), {0, -1}, {3, 0}, {0, 3}, {-4, -4}, {1000, 1000}}) {
        EXPECT_FALSE(code.dark(x, y)) << x << ' ' << y;
    }
}

TEST(QrTerminal, TwoRowsOfModulesALine)
{
    const QString ink = QStringLiteral("\033[38;5;16;48;5;231m");
    const QString none = QStringLiteral("\033[0m");
    const QString empty = ink + QString(11, u' ') + none;
    EXPECT_EQ(qrForTerminal(smallCode()),
              (QStringList{empty, empty, ink + QStringLiteral("    ▀▄▀    ") + none,
                           ink + QStringLiteral("    ▀▀     ") + none, empty, empty}));
}

TEST(QrTerminal, AllFourHalves)
{
    const TQrCode code{2, {true, true, true, false}};
    EXPECT_TRUE(qrForTerminal(code)[2].contains(QStringLiteral("    █▀    ")));
}

TEST(QrImage, HasAMarginAndSquareModules)
{
    const QImage image = qrImage(smallCode());
    EXPECT_EQ(image.size(), QSize(88, 88));
    for (int y = 0; y < 88; ++y) {
        for (int x = 0; x < 88; ++x) {
            const int column = x / 8 - 4, row = y / 8 - 4;
            const bool inside = column >= 0 && row >= 0 && column < 3 && row < 3;
            const bool dark = inside && smallCode().Dark[size_t(row * 3 + column)];
            ASSERT_EQ(image.pixelColor(x, y), dark ? Qt::black : Qt::white) << x << ' ' << y;
        }
    }
}

TEST(QrImage, AModuleIsOneMillimetre)
{
    const QImage image = qrImage(smallCode());
    EXPECT_EQ(image.dotsPerMeterX(), 8'000);
    EXPECT_EQ(image.dotsPerMeterY(), 8'000);
}

TEST(QrSvg, IsADrawingInMillimetres)
{
    EXPECT_EQ(
        qrSvg(smallCode()),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"11mm\" height=\"11mm\" viewBox=\"0 0 11 11\" "
        "shape-rendering=\"crispEdges\">\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n"
        "<path d=\"M4 4h1v1h-1zM6 4h1v1h-1zM5 5h1v1h-1zM4 6h1v1h-1zM5 6h1v1h-1z\" fill=\"#000\"/>\n"
        "</svg>\n");
}

} // namespace
