// How the hex dump draws its lines.

#include "ui/hex_dump_area.h"
#include "ui/look.h"

#include <QFontMetricsF>
#include <QPainter>

namespace {

// Cells that the selection covers in a line whose sixteen addresses begin at `start`.
struct Covered {
    uint32_t from = 0;
    uint32_t to = 0; // inclusive
};

std::optional<Covered> coveredCells(const std::optional<DumpSelection>& selection, uint32_t start) {
    const uint64_t end = uint64_t{start} + kBytesPerRow - 1;
    if (!selection || selection->last() < start || selection->first() > end) {
        return std::nullopt;
    }
    const uint64_t from = std::max(selection->first(), start);
    const uint64_t to = std::min<uint64_t>(selection->last(), end);
    return Covered{static_cast<uint32_t>(from - start), static_cast<uint32_t>(to - start)};
}

} // namespace

double HexDumpArea::charWidth() const {
    return QFontMetricsF(font()).horizontalAdvance(u'0');
}

void HexDumpArea::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.setFont(font());
    const DumpScroll place = scroll();
    for (int row = 0; row < place.page && place.position + row <= place.maximum; ++row) {
        drawLine(painter, row, static_cast<uint32_t>(place.position + row));
    }
}

void HexDumpArea::drawLine(QPainter& painter, int row, uint32_t line) {
    HEXDUMPVIEW_MakeLine(range_, line, texts_);
    const int top = row * lineHeight();
    QRectF selectedHex;
    QRectF selectedCharacters;
    if (const auto covered = coveredCells(selection_, range_.first + line * kBytesPerRow)) {
        selectedHex = cells(kHex, covered->from, covered->to, top);
        selectedCharacters = cells(kCharacters, covered->from, covered->to, top);
    }
    drawColumn(painter, kAddress, top, QString::fromLatin1(texts_.address), {});
    drawColumn(painter, kHex, top, QString::fromLatin1(texts_.hex), selectedHex);
    drawColumn(painter, kCharacters, top, LOOK_Characters(texts_.characters), selectedCharacters);
}

// Where the cells from `from` to `to` of a line stand, the blanks between them included.
QRectF HexDumpArea::cells(int column, uint32_t from, uint32_t to, int top) const {
    const uint32_t step = column == kHex ? 3 : 1;
    const uint32_t width = column == kHex ? 2 : 1;
    const double left = textLeft(column) + charWidth() * step * from;
    const double right = textLeft(column) + charWidth() * (step * to + width);
    return {left, double(top), right - left, double(lineHeight())};
}

void HexDumpArea::drawColumn(QPainter& painter, int column, int top, const QString& text,
                             const QRectF& selected) const {
    const QRect clip(header_->sectionViewportPosition(column), top, header_->sectionSize(column),
                     lineHeight());
    const QPointF base(textLeft(column), top + fontMetrics().ascent());
    painter.setClipRect(clip);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(base, text);
    if (!selected.isEmpty()) {
        painter.setClipRect(selected.intersected(clip));
        painter.fillRect(selected, palette().color(QPalette::Highlight));
        painter.setPen(palette().color(QPalette::HighlightedText));
        painter.drawText(base, text);
    }
}
