#include "ui/placement.h"

#include <algorithm>

namespace {

constexpr int kGrip = 40;         // pixels of a title bar's width that must be within reach
constexpr int kTitleHeight = 20;  // pixels
constexpr int kLeastHeight = 100; // of a tile, pixels
constexpr int kLeastWidth = 200;

} // namespace

QRect PLACEMENT_BroughtBack(const QRect& wanted, const QRect& area) {
    const QRect title(wanted.topLeft(), QSize(wanted.width(), kTitleHeight));
    const QRect seen = title & area;
    if (seen.width() >= std::min(kGrip, wanted.width()) && seen.height() == kTitleHeight) {
        return wanted;
    }
    const QSize size = wanted.size().boundedTo(area.size());
    const int left = std::clamp(wanted.left(), area.left(), area.right() + 1 - size.width());
    const int top = std::clamp(wanted.top(), area.top(), area.bottom() + 1 - size.height());
    return QRect(QPoint(left, top), size);
}

QRectF PLACEMENT_Share(const QRect& place, QSize area) {
    const double width = std::max(area.width(), 1);
    const double height = std::max(area.height(), 1);
    return {place.x() / width, place.y() / height, place.width() / width, place.height() / height};
}

// By its edges, so that neighbours stay neighbours.
QRect PLACEMENT_OfShare(const QRectF& share, QSize area) {
    const QPoint from(qRound(share.left() * area.width()), qRound(share.top() * area.height()));
    const QPoint to(qRound(share.right() * area.width()), qRound(share.bottom() * area.height()));
    return {from, QSize(to.x() - from.x(), to.y() - from.y())};
}

std::vector<QRect> PLACEMENT_Tiles(int count, QSize area, bool wide) {
    // Lines run along the short side of the tiles: columns of wide tiles, rows of high ones. One
    // line serves while its tiles are large enough, and there are never more than in a square.
    const int across = wide ? area.width() : area.height();
    const int along = wide ? area.height() : area.width();
    const int least = wide ? kLeastHeight : kLeastWidth;
    int lines = 1;
    while ((lines + 1) * (lines + 1) <= count && along * lines < count * least) {
        ++lines;
    }
    std::vector<QRect> tiles;
    for (int line = 0; line < lines; ++line) {
        const int inLine = count / lines + (line >= lines - count % lines ? 1 : 0);
        const int from = across * line / lines;
        const int breadth = across * (line + 1) / lines - from;
        for (int index = 0; index < inLine; ++index) {
            const int start = along * index / inLine;
            const int length = along * (index + 1) / inLine - start;
            tiles.push_back(wide ? QRect(from, start, breadth, length)
                                 : QRect(start, from, length, breadth));
        }
    }
    return tiles;
}

std::vector<QRect> PLACEMENT_Cascade(int count, QSize area, int step) {
    const QSize size = area * 2 / 3;
    const QSize room = area - size;
    const int turn = std::max(1, std::min(room.width(), room.height()) / std::max(step, 1) + 1);
    std::vector<QRect> places;
    for (int index = 0; index < count; ++index) {
        const int offset = index % turn * step;
        places.emplace_back(QPoint(offset, offset), size);
    }
    return places;
}
