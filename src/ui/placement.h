// Where windows stand: arithmetic only.
#pragma once

#include <QRect>
#include <QRectF>
#include <QSize>
#include <vector>

// `wanted` as it is while enough of its title bar lies inside `area` to be seen and dragged, else
// moved, and where it is larger shrunk, into the area.
QRect PLACEMENT_BroughtBack(const QRect& wanted, const QRect& area);

// A rectangle as shares of an area, from 0 to 1, and back; all pixels of neighbours are theirs.
QRectF PLACEMENT_Share(const QRect& place, QSize area);
QRect PLACEMENT_OfShare(const QRectF& share, QSize area);

// `count` rectangles that fill an area of that size, wide ones (one below the other) or high ones
// (side by side), in one line while they are large enough.
std::vector<QRect> PLACEMENT_Tiles(int count, QSize area, bool wide);

// `count` rectangles of two thirds of the area, each `step` pixels right of and below the one
// before it, beginning again at the upper left where they would leave the area.
std::vector<QRect> PLACEMENT_Cascade(int count, QSize area, int step);
