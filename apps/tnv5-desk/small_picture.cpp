#include "apps/tnv5-desk/small_picture.h"

#include <QHash>
#include <algorithm>
#include <vector>

namespace tnv5::desk {

namespace {

constexpr QRgb kAlike = 0xfff8f8f8; // colours that differ less count as one
constexpr std::size_t kMostColours = 256;

} // namespace

QImage smallPicture(const QImage& picture)
{
    const QImage full = picture.convertToFormat(QImage::Format_RGB32);
    QHash<QRgb, std::pair<int, QRgb>> counts; // how often, and one of them
    for (int y = 0; y < full.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(full.constScanLine(y));
        for (int x = 0; x < full.width(); ++x) {
            auto& [count, colour] = counts[line[x] & kAlike];
            ++count;
            colour = line[x];
        }
    }
    std::vector<std::pair<int, QRgb>> usual(counts.begin(), counts.end());
    std::sort(usual.begin(), usual.end(), std::greater<>());
    usual.resize(std::min(usual.size(), kMostColours));
    QList<QRgb> table;
    for (const auto& [count, colour] : usual) {
        table << colour;
    }
    return full.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither | Qt::AvoidDither);
}

} // namespace tnv5::desk
