// How the hex dump draws its lines.

#include "shell/comparison.h"
#include "ui/hex_dump_area.h"
#include "ui/look.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {

// What is selected of the line whose sixteen addresses begin at `start`; empty when nothing is.
AddressRange selectedIn(const std::optional<DumpSelection>& selection, uint32_t start) {
    const AddressRange whole = selection ? selection->range() : AddressRange();
    return {std::max(whole.start, start),
            std::min(whole.end, AddressRange::of(start, kBytesPerRow).end)};
}

} // namespace

double HexDumpArea::charWidth() const {
    return QFontMetricsF(font()).horizontalAdvance(u'0');
}

void HexDumpArea::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
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
    const uint32_t start = range_.start + line * kBytesPerRow;
    const bool hasCaret = caret_.address - start < kBytesPerRow;
    if (hasCaret && caret_.digit) {
        texts_.hex[size_t{3} * (caret_.address - start)] = "0123456789ABCDEF"[*caret_.digit];
    }
    if (const AddressRange selected = selectedIn(selection_, start); !selected.empty()) {
        selectedHex = cells(kHex, selected, start, top);
        selectedCharacters = cells(kCharacters, selected, start, top);
    }
    drawColumn(painter, kAddress, top, QString::fromLatin1(texts_.address), {});
    drawColumn(painter, kHex, top, QString::fromLatin1(texts_.hex), selectedHex);
    drawColumn(painter, kCharacters, top, LOOK_Characters(texts_.characters), selectedCharacters);
    drawDifferences(painter, start, top);
    if (hasCaret) {
        drawCaret(painter, start, top);
    }
}

// A block over the digit or the character that the next key replaces, and a frame around the byte
// in the other column; frames alone while the keys go elsewhere.
void HexDumpArea::drawCaret(QPainter& painter, uint32_t start, int top) const {
    const AddressRange byte = AddressRange::of(caret_.address, 1);
    const int active = caret_.characters ? kCharacters : kHex;
    for (const int column : {int{kHex}, int{kCharacters}}) {
        const QRectF whole = cells(column, byte, start, top);
        painter.setClipRect(QRectF(header_->sectionViewportPosition(column), top,
                                   header_->sectionSize(column), lineHeight()));
        if (column != active || !hasFocus()) {
            painter.setPen(palette().color(QPalette::Text));
            painter.drawRect(whole.adjusted(-0.5, 0.5, 0.5, -0.5));
            continue;
        }
        const double width = charWidth();
        const double skipped = caret_.behind ? whole.width() : caret_.digit ? width : 0;
        drawCaretBlock(painter, {whole.left() + skipped, whole.top(), width, whole.height()});
    }
}

// With what stands in it in the colours of the background.
void HexDumpArea::drawCaretBlock(QPainter& painter, const QRectF& cell) const {
    const int column = caret_.characters ? kCharacters : kHex;
    painter.setClipRect(cell, Qt::IntersectClip);
    painter.fillRect(cell, palette().color(QPalette::Text));
    painter.setPen(palette().color(QPalette::Base));
    const QPointF base(textLeft(column), cell.top() + fontMetrics().ascent());
    painter.drawText(base, column == kHex ? QString::fromLatin1(texts_.hex)
                                          : LOOK_Characters(texts_.characters));
}

// Over the line: what differs is underlined, and in another colour where it is not selected.
void HexDumpArea::drawDifferences(QPainter& painter, uint32_t start, int top) const {
    const AddressRange selected = selectedIn(selection_, start);
    for (const AddressRange& range :
         COMPARISON_DifferencesIn(AddressRange::of(start, kBytesPerRow))) {
        for (uint64_t at = range.start; at < range.end; ++at) {
            const auto byte = AddressRange::of(static_cast<uint32_t>(at), 1);
            const bool isSelected = selected.contains(byte.start);
            drawDifference(painter, kHex, QString::fromLatin1(texts_.hex),
                           cells(kHex, byte, start, top), isSelected);
            drawDifference(painter, kCharacters, LOOK_Characters(texts_.characters),
                           cells(kCharacters, byte, start, top), isSelected);
        }
    }
}

void HexDumpArea::drawDifference(QPainter& painter, int column, const QString& text,
                                 const QRectF& place, bool isSelected) const {
    constexpr double kLine = 2; // pixels
    const QColor colour =
        isSelected ? palette().color(QPalette::HighlightedText) : LOOK_BadColour(palette());
    painter.setClipRect(
        place.intersected(QRectF(header_->sectionViewportPosition(column), place.y(),
                                 header_->sectionSize(column), place.height())));
    if (!isSelected) {
        painter.fillRect(place, palette().color(QPalette::Base));
        painter.setPen(colour);
        painter.drawText(QPointF(textLeft(column), place.y() + fontMetrics().ascent()), text);
    }
    painter.fillRect(QRectF(place.x(), place.bottom() - kLine, place.width(), kLine), colour);
}

// Both values of a byte that differs.
bool HexDumpArea::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QAbstractScrollArea::viewportEvent(event);
    }
    const auto* help = static_cast<QHelpEvent*>(event);
    const auto pointed = hit(help->pos());
    const std::string text = pointed ? COMPARISON_TextAt(pointed->caret) : std::string();
    QToolTip::showText(help->globalPos(), QString::fromStdString(text), viewport());
    return true;
}

// Where the cells of a range stand in the line that begins at `start`, the blanks between them
// included.
QRectF HexDumpArea::cells(int column, const AddressRange& shown, uint32_t start, int top) const {
    const uint32_t step = column == kHex ? 3 : 1;
    const uint32_t width = column == kHex ? 2 : 1;
    const double left = textLeft(column) + charWidth() * step * (shown.start - start);
    const double right = textLeft(column) + charWidth() * (step * (shown.last() - start) + width);
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
