#include "ui/map_picture.h"

#include "device/device.h"
#include "ui/look.h"

#include <QFontMetrics>
#include <algorithm>
#include <array>

namespace {

constexpr int kGap = 6;          // pixels between what stands side by side
constexpr int kLeastHeight = 3;  // pixels of what must not be overlooked
constexpr int kLeastHatched = 8; // below, a pattern could not be seen
constexpr int kColumnCount = 3;
constexpr int kWidestColumn = 110;
constexpr int kSwatch = 26;

constexpr std::array<const char*, kColumnCount> kColumnTitles = {"Blocks", "Image", "Chip"};

enum class MapColour { plain, good, note, bad, text };

// How a fact looks: in one of the columns, or at its margin. The first of a strip that holds is
// what is drawn.
struct MapStyle {
    int column;
    bool isMargin;
    MapFacts facts; // all of them
    const char* word;
    MapColour colour;
    Qt::BrushStyle pattern;
};

constexpr MapStyle kStyles[] = {
    {0, false, kMapSelected, "selected", MapColour::plain, Qt::SolidPattern},
    {1, false, kMapData | kMapGap, "data with gaps", MapColour::plain, Qt::FDiagPattern},
    {1, false, kMapData, "data", MapColour::plain, Qt::SolidPattern},
    {1, true, kMapPassword, "password", MapColour::note, Qt::VerPattern},
    {1, true, kMapVectors, "vectors", MapColour::good, Qt::HorPattern},
    {2, false, kMapDiffers, "differs", MapColour::bad, Qt::DiagCrossPattern},
    {2, false, kMapUnknown, "unfinished", MapColour::note, Qt::CrossPattern},
    {2, false, kMapWritten, "written", MapColour::plain, Qt::BDiagPattern},
    {2, false, kMapVerified, "verified", MapColour::good, Qt::SolidPattern},
    {2, false, kMapErased, "erased", MapColour::text, Qt::HorPattern},
    {2, true, kMapProtected, "protected", MapColour::note, Qt::FDiagPattern},
};

QColor mapColour(MapColour colour, const QPalette& palette) {
    switch (colour) {
    case MapColour::plain:
        return LOOK_PlainColour(palette);
    case MapColour::good:
        return LOOK_GoodColour(palette);
    case MapColour::note:
        return LOOK_NoteColour(palette);
    case MapColour::bad:
        return LOOK_BadColour(palette);
    case MapColour::text:
        break;
    }
    return palette.color(QPalette::Text);
}

const MapStyle* styleOf(int column, bool isMargin, MapFacts facts) {
    const auto* found = std::ranges::find_if(kStyles, [&](const MapStyle& style) {
        return style.column == column && style.isMargin == isMargin &&
               (facts & style.facts) == style.facts;
    });
    return found == std::end(kStyles) ? nullptr : found;
}

} // namespace

MapPicture::MapPicture(const QSize& size, const QPalette& palette, const QFont& font, int current)
    : size_(size), palette_(palette), font_(font), line_(QFontMetrics(font).height()),
      labels_(QFontMetrics(font).horizontalAdvance("00000000") + kGap), top_(line_ + 2 * kGap),
      scale_(0) {
    scale_ = MapScale(layOutLegend() - kGap - top_);
    const std::vector<MapFacts> facts = MEMORYMAP_Pixels(scale_);
    for (int column = 0; column < kColumnCount; ++column) {
        const QRectF area = stripArea(column, false).united(stripArea(column, true));
        addText({area.x(), double(kGap), area.width(), double(line_)},
                kColumnTitles[static_cast<size_t>(column)]);
        addStrip(column, false, facts);
        addStrip(column, true, facts);
    }
    addBreaks();
    addLabels();
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        if (block.index == current) {
            const MapScale::Span span = scale_.spanOf(block.range);
            const QRectF all =
                stripArea(0, false).united(stripArea(kColumnCount - 1, true)).adjusted(-3, 0, 3, 0);
            shapes_.push_back(
                {{all.x(), double(top_ + span.first), all.width(), double(span.end - span.first)},
                 palette_.color(QPalette::Text),
                 Qt::NoBrush,
                 {}});
        }
    }
}

// The whole height of the flash; the margin is at the right of its column.
QRectF MapPicture::stripArea(int column, bool isMargin) const {
    const int left = kGap + labels_;
    const int width = std::min((size_.width() - left) / kColumnCount, kWidestColumn) - kGap;
    const int margin = column == 0 ? 0 : width / 4;
    const QRectF whole(left + column * (width + kGap), top_, std::max(width, 0), scale_.pixels());
    return isMargin ? whole.adjusted(width - margin, 0, 0, 0) : whole.adjusted(0, 0, -margin, 0);
}

// At the bottom, in as many lines as the width asks for; its upper edge.
int MapPicture::layOutLegend() {
    const QFontMetrics metrics(font_);
    std::vector<QRectF> places;
    double x = kGap;
    double y = 0;
    for (const MapStyle& style : kStyles) {
        const double width = kSwatch + kGap + metrics.horizontalAdvance(style.word) + 2 * kGap;
        if (x + width > size_.width() && x > kGap) {
            x = kGap;
            y += line_ + 2;
        }
        places.emplace_back(x, y, width, line_);
        x += width;
    }
    const double top = size_.height() - kGap - line_ - y;
    for (size_t index = 0; index < places.size(); ++index) {
        const QRectF place = places[index].translated(0, top);
        const QRectF swatch(place.x(), place.y() + 2, kSwatch, line_ - 4);
        const QColor colour = mapColour(kStyles[index].colour, palette_);
        shapes_.push_back({swatch, colour, kStyles[index].pattern, {}});
        shapes_.push_back({swatch, colour, Qt::NoBrush, {}});
        addText(place.adjusted(kSwatch + kGap, 0, 0, 0), kStyles[index].word);
    }
    return static_cast<int>(top);
}

void MapPicture::addStrip(int column, bool isMargin, const std::vector<MapFacts>& facts) {
    const QRectF area = stripArea(column, isMargin);
    const auto count = static_cast<int>(facts.size());
    for (int first = 0; first < count;) {
        const MapStyle* style = styleOf(column, isMargin, facts[static_cast<size_t>(first)]);
        int end = first + 1;
        while (end < count && styleOf(column, isMargin, facts[static_cast<size_t>(end)]) == style) {
            ++end;
        }
        if (style != nullptr) {
            const int height = std::max(end - first, kLeastHeight);
            const int top = std::max(std::min(first, count - height), 0);
            shapes_.push_back({{area.x(), double(top_ + top), area.width(), double(height)},
                               mapColour(style->colour, palette_),
                               height < kLeastHatched ? Qt::SolidPattern : style->pattern,
                               {}});
        }
        first = end;
    }
    if (count > 0 && !area.isEmpty()) {
        shapes_.push_back({area, palette_.color(QPalette::Text), Qt::NoBrush, {}});
    }
}

// A line where a block begins, in the column of the blocks.
void MapPicture::addBreaks() {
    const QRectF area = stripArea(0, false);
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        const MapScale::Span span = scale_.spanOf(block.range);
        if (span.end - span.first > 1) {
            shapes_.push_back(
                {{area.x(), double(top_ + span.first), area.width(), double(span.end - span.first)},
                 palette_.color(QPalette::Text),
                 Qt::NoBrush,
                 {}});
        }
    }
}

// The first address of each block for which there is room.
void MapPicture::addLabels() {
    int free = top_;
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        const int y = top_ + scale_.spanOf(block.range).first;
        if (y >= free && scale_.pixels() > 0) {
            addText({double(kGap), double(y) - 1, double(labels_), double(line_)},
                    QString("%1").arg(block.range.start, 0, 16).toUpper());
            free = y + line_;
        }
    }
}

void MapPicture::addText(const QRectF& area, const QString& text) {
    shapes_.push_back({area, palette_.color(QPalette::Text), Qt::SolidPattern, text});
}

void MapPicture::paint(QPainter& painter) const {
    painter.fillRect(QRect(QPoint(), size_), palette_.color(QPalette::Base));
    painter.setFont(font_);
    for (const MapShape& shape : shapes_) {
        painter.setPen(shape.colour);
        if (!shape.text.isEmpty()) {
            painter.drawText(shape.area, Qt::AlignLeft | Qt::AlignTop, shape.text);
        } else if (shape.pattern == Qt::NoBrush) {
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(shape.area.adjusted(0, 0, -1, -1));
        } else {
            painter.fillRect(shape.area, QBrush(shape.colour, shape.pattern));
        }
    }
}
