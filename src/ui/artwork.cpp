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

// Every picture is drawn in a square of 16 units.
constexpr qreal kUnits = 16;

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

// A chip that a flash goes into.
void paintProgram(QPainter& painter) {
    paintChip(painter);
    QPainterPath bolt(QPointF(9.2, 3.4));
    for (const QPointF point : {QPointF(4.9, 8.7), QPointF(7.6, 8.7), QPointF(6.6, 12.6),
                                QPointF(11.1, 7.1), QPointF(8.3, 7.1)}) {
        bolt.lineTo(point);
    }
    bolt.closeSubpath();
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
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kBolt, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({QPointF(3.7, 5.4), QPointF(6.3, 8), QPointF(3.7, 10.6)}));
    painter.drawLine(QPointF(7.8, 10.8), QPointF(12, 10.8));
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

void paint(QPainter& painter, Art art) {
    switch (art) {
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

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
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
