#include "ui/map_picture.h"

#include "device/device.h"
#include "ui/look.h"

#include <QFontMetrics>
#include <algorithm>
#include <array>

namespace {

constexpr int kGap = 6;          // pixels between what stands side by side
constexpr size_t kLeastMark = 3; // pixels of what must not be overlooked
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

using StyleLine = std::vector<const MapStyle*>; // one a pixel, none where nothing is drawn

// Calls `use` for the first pixel and the one behind the last of each run of the same style.
template <class Use>
void forEachRun(const StyleLine& line, const Use& use) {
    for (size_t first = 0; first < line.size();) {
        size_t end = first + 1;
        while (end < line.size() && line[end] == line[first]) {
            ++end;
        }
        use(first, end);
        first = end;
    }
}

// What is too small to be seen takes pixels of what is less important than it.
StyleLine styleLine(int column, bool isMargin, const std::vector<MapFacts>& facts) {
    StyleLine line;
    for (const MapFacts pixel : facts) {
        line.push_back(styleOf(column, isMargin, pixel));
    }
    StyleLine widened = line;
    forEachRun(line, [&](size_t first, size_t end) {
        const MapStyle* style = line[first];
        const size_t height = std::min(kLeastMark, line.size());
        const size_t top = std::min(first, line.size() - height);
        if (style == nullptr || end - first >= height) {
            return;
        }
        for (size_t at = top; at < top + height; ++at) {
            if (widened[at] == nullptr || style < widened[at]) { // as they stand in the table
                widened[at] = style;
            }
        }
    });
    return widened;
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
        addText({area.x(), double(kGap), area.width() + kGap, double(line_)},
                kColumnTitles[static_cast<size_t>(column)]);
        addStrip(column, false, facts);
        addStrip(column, true, facts);
    }
    addBlocks(current);
    addLabels();
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
    if (facts.empty() || area.isEmpty()) {
        return;
    }
    const StyleLine line = styleLine(column, isMargin, facts);
    forEachRun(line, [&](size_t first, size_t end) {
        if (const MapStyle* style = line[first]) {
            const auto height = static_cast<double>(end - first);
            shapes_.push_back({{area.x(), top_ + static_cast<double>(first), area.width(), height},
                               mapColour(style->colour, palette_),
                               height < kLeastHatched ? Qt::SolidPattern : style->pattern,
                               {}});
        }
    });
    shapes_.push_back({area, palette_.color(QPalette::Text), Qt::NoBrush, {}});
}

// The outlines of the blocks in their column, and a thick one of the current block round all.
void MapPicture::addBlocks(int current) {
    const QRectF column = stripArea(0, false);
    const QRectF all = column.united(stripArea(kColumnCount - 1, true)).adjusted(-4, 0, 4, 0);
    const auto add = [this](const QRectF& area) {
        shapes_.push_back({area, palette_.color(QPalette::Text), Qt::NoBrush, {}});
    };
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        const MapScale::Span span = scale_.spanOf(block.range);
        const double top = top_ + span.first;
        const double height = span.end - span.first;
        if (height > 1) {
            add({column.x(), top, column.width(), height});
        }
        if (block.index == current) {
            for (const int inset : {0, 1, 2}) {
                add(QRectF(all.x(), top, all.width(), height)
                        .adjusted(inset, inset, -inset, -inset));
            }
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
            painter.drawRect(shape.area.adjusted(0, 0, -1, -1));
        } else {
            painter.fillRect(shape.area, QBrush(shape.colour, shape.pattern));
        }
    }
}
