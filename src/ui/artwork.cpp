#include "ui/artwork.h"

#include "shell/identity.h"

#include <QIconEngine>
#include <QPainterPath>

namespace {

const QColor kBody(28, 62, 108);
const QColor kBodyEdge(86, 140, 200);
const QColor kPin(176, 184, 196);
const QColor kBolt(255, 196, 61);
const QColor kPaper(250, 250, 247);
const QColor kInk(46, 58, 74);
const QColor kAccent(38, 122, 193);
const QColor kGood(46, 158, 79);
const QColor kBad(214, 69, 65);
const QColor kMetal(128, 138, 150);

// Every picture is drawn in a square of 16 units.
constexpr qreal kUnits = 16;
constexpr qreal kDisabled = 0.35; // opacity

void paintPins(QPainter& painter) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPin);
    for (const qreal offset : {3.9, 7.3, 10.7}) {
        painter.drawRect(QRectF(offset, 0.4, 1.4, 15.2));
        painter.drawRect(QRectF(0.4, offset, 15.2, 1.4));
    }
}

void paintChip(QPainter& painter) {
    paintPins(painter);
    painter.setPen(QPen(kBodyEdge, 0.6));
    painter.setBrush(kBody);
    painter.drawRoundedRect(QRectF(2.2, 2.2, 11.6, 11.6), 1.4, 1.4);
}

void paintPolygon(QPainter& painter, const QColor& colour, const QPolygonF& points) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawPolygon(points);
}

// A chip that a flash goes into.
void paintProgram(QPainter& painter) {
    paintChip(painter);
    QPainterPath bolt(QPointF(9.2, 3.4));
    for (const QPointF point : {QPointF(4.9, 8.7), QPointF(7.6, 8.7), QPointF(6.6, 12.6),
                                QPointF(11.1, 7.1), QPointF(8.3, 7.1)}) {
        bolt.lineTo(point);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(kBolt);
    painter.drawPath(bolt);
}

void paintSheet(QPainter& painter) {
    painter.setPen(QPen(kInk, 0.7));
    painter.setBrush(kPaper);
    painter.drawRoundedRect(QRectF(1.5, 1.5, 13, 13), 1, 1);
    painter.setPen(Qt::NoPen);
}

void paintHexList(QPainter& painter) {
    paintSheet(painter);
    painter.setBrush(kAccent);
    painter.drawRect(QRectF(1.85, 1.85, 12.3, 2.6));
    painter.setBrush(kInk);
    for (const qreal row : {6.0, 8.6, 11.2}) {
        painter.drawRect(QRectF(3.2, row, 2.2, 1.2));
        painter.drawRect(QRectF(6.6, row, 6.2, 1.2));
    }
}

void paintHexDump(QPainter& painter) {
    paintSheet(painter);
    int cell = 0;
    for (const qreal row : {3.4, 6.2, 9.0, 11.8}) {
        for (const qreal column : {3.2, 5.8, 8.4, 11.0}) {
            painter.setBrush(cell++ % 3 == 0 ? kAccent : kInk);
            painter.drawRect(QRectF(column, row, 1.8, 1.4));
        }
    }
}

void paintLog(QPainter& painter) {
    paintSheet(painter);
    for (const qreal row : {4.0, 7.2, 10.4}) {
        painter.setBrush(kAccent);
        painter.drawEllipse(QRectF(3.2, row, 1.7, 1.7));
        painter.setBrush(kInk);
        painter.drawRect(QRectF(6.2, row + 0.3, 6.4, 1.1));
    }
}

void paintTerminal(QPainter& painter) {
    painter.setPen(QPen(kBodyEdge, 0.6));
    painter.setBrush(kInk);
    painter.drawRoundedRect(QRectF(1.2, 2.2, 13.6, 11.6), 1, 1);
    painter.setPen(QPen(kBolt, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({QPointF(3.7, 5.4), QPointF(6.3, 8), QPointF(3.7, 10.6)}));
    painter.drawLine(QPointF(7.8, 10.8), QPointF(12, 10.8));
}

void paintMemoryMap(QPainter& painter) {
    paintSheet(painter);
    painter.setBrush(kAccent);
    painter.drawRect(QRectF(4, 3, 3.4, 7.6));
    painter.setBrush(kInk);
    for (const qreal row : {3.0, 5.8, 8.6, 11.4}) {
        painter.drawRect(QRectF(8.6, row, 3.4, 2));
    }
}

void paintHelp(QPainter& painter) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(kAccent);
    painter.drawEllipse(QRectF(1, 1, 14, 14));
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(11);
    painter.setFont(font);
    painter.setPen(kPaper);
    painter.drawText(QRectF(0, 0, kUnits, kUnits), Qt::AlignCenter, "?");
}

void paintOpen(QPainter& painter) {
    paintPolygon(painter, kBolt.darker(130),
                 {{1, 13}, {1, 3}, {6, 3}, {7.5, 5}, {13, 5}, {13, 13}});
    paintPolygon(painter, kBolt, {{3.6, 7}, {15.6, 7}, {13, 13.4}, {1, 13.4}});
}

void paintAuto(QPainter& painter) {
    paintPolygon(painter, kGood, {{3.5, 1.8}, {14, 8}, {3.5, 14.2}});
}

// A chip with an arrow into it, or out of it.
void paintTransfer(QPainter& painter, bool toChip) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(kMetal);
    for (const qreal pin : {3.2, 6.4, 9.6}) {
        painter.drawRect(QRectF(pin + 0.6, 9.4, 1.6, 6.2));
    }
    painter.setBrush(kAccent);
    painter.drawRoundedRect(QRectF(2, 10.6, 12, 3.6), 0.8, 0.8);
    const qreal tip = toChip ? 9.2 : 0.6;
    const qreal neck = toChip ? 4.8 : 5;
    const qreal end = toChip ? 0.6 : 9.2;
    paintPolygon(
        painter, kAccent,
        {{8, tip}, {12.4, neck}, {9.6, neck}, {9.6, end}, {6.4, end}, {6.4, neck}, {3.6, neck}});
}

void paintVerify(QPainter& painter) {
    painter.setPen(QPen(kGood, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({{2.2, 8.6}, {6.2, 12.6}, {13.8, 3.4}}));
}

void paintErase(QPainter& painter) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(kMetal);
    painter.drawRect(QRectF(2, 3, 12, 1.6));
    painter.drawRect(QRectF(6, 1.4, 4, 1.4));
    paintPolygon(painter, kMetal, {{3, 5.6}, {13, 5.6}, {12, 15}, {4, 15}});
    painter.setPen(QPen(kPaper, 1));
    for (const qreal line : {6.2, 8.0, 9.8}) {
        painter.drawLine(QPointF(line, 7.2), QPointF(line, 13.4));
    }
}

void paintCancel(QPainter& painter) {
    painter.setPen(QPen(kBad, 2.6, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(3.4, 3.4), QPointF(12.6, 12.6));
    painter.drawLine(QPointF(12.6, 3.4), QPointF(3.4, 12.6));
}

void paint(QPainter& painter, Art art) {
    switch (art) {
    case Art::open:
        return paintOpen(painter);
    case Art::toAuto:
        return paintAuto(painter);
    case Art::toChip:
        return paintTransfer(painter, true);
    case Art::fromChip:
        return paintTransfer(painter, false);
    case Art::verify:
        return paintVerify(painter);
    case Art::erase:
        return paintErase(painter);
    case Art::cancel:
        return paintCancel(painter);
    case Art::program:
        return paintProgram(painter);
    case Art::hexList:
        return paintHexList(painter);
    case Art::hexDump:
        return paintHexDump(painter);
    case Art::log:
        return paintLog(painter);
    case Art::device:
        return paintChip(painter);
    case Art::terminal:
        return paintTerminal(painter);
    case Art::memoryMap:
        return paintMemoryMap(painter);
    case Art::help:
        return paintHelp(painter);
    }
}

void paintIn(QPainter& painter, const QRectF& square, Art art) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(square.topLeft());
    painter.scale(square.width() / kUnits, square.height() / kUnits);
    paint(painter, art);
    painter.restore();
}

// Paints at whatever size and scale is asked for.
class ArtEngine : public QIconEngine {
public:
    explicit ArtEngine(Art art) : art_(art) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        painter->setOpacity(mode == QIcon::Disabled ? kDisabled : 1);
        const int side = std::min(rect.width(), rect.height());
        QRect square(0, 0, side, side);
        square.moveCenter(rect.center());
        paintIn(*painter, square, art_);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new ArtEngine(art_); }

private:
    Art art_;
};

} // namespace

QIcon ART_Icon(Art art) {
    return QIcon(new ArtEngine(art)); // the icon owns it
}

void ART_PaintLogo(QPainter& painter, const QRect& area, const QPalette& palette) {
    constexpr int kEmblem = 128;
    constexpr int kGap = 12;
    constexpr int kNamePixels = 30;
    QFont font = painter.font();
    font.setPixelSize(kNamePixels);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 4);
    const int nameHeight = QFontMetrics(font).height();
    QRect whole(0, 0, area.width(), kEmblem + kGap + nameHeight);
    whole.moveCenter(area.center());
    painter.save();
    const QRect emblem(whole.center().x() - kEmblem / 2, whole.top(), kEmblem, kEmblem);
    paintIn(painter, emblem, Art::program);
    painter.setFont(font);
    painter.setPen(palette.color(QPalette::Active, QPalette::WindowText));
    painter.drawText(
        QRect(whole.left(), whole.bottom() + 1 - nameHeight, whole.width(), nameHeight),
        Qt::AlignCenter, kProductName);
    painter.restore();
}
