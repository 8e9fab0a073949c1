// Where windows stand: arithmetic only.
#pragma once

#include <QRect>
#include <vector>

// `wanted` as it is while enough of its title bar lies inside `area` to be seen and dragged, else
// moved, and where it is larger shrunk, into the area.
QRect PLACEMENT_BroughtBack(const QRect& wanted, const QRect& area);

// `count` rectangles that fill an area of that size, wide ones (one below the other, up to three)
// or high ones (side by side).
std::vector<QRect> PLACEMENT_Tiles(int count, QSize area, bool wide);

// `count` rectangles of two thirds of the area, each `step` pixels right of and below the one
// before it, beginning again at the upper left where they would leave the area.
std::vector<QRect> PLACEMENT_Cascade(int count, QSize area, int step);
