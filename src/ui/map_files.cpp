// The memory map written to picture files.

#include "notice/error.h"
#include "platform/files.h"
#include "ui/map_picture.h"

#include <QBuffer>
#include <QFontInfo>
#include <QImage>
#include <set>

namespace {

// The lines of a pattern in a cell of eight by eight.
const char* patternPath(Qt::BrushStyle pattern) {
    switch (pattern) {
    case Qt::HorPattern:
        return "M0 4H8";
    case Qt::VerPattern:
        return "M4 0V8";
    case Qt::CrossPattern:
        return "M0 4H8M4 0V8";
    case Qt::BDiagPattern:
        return "M0 8L8 0";
    case Qt::FDiagPattern:
        return "M0 0L8 8";
    default:
        return "M0 8L8 0M0 0L8 8";
    }
}

QString patternName(const MapShape& shape) {
    return QString("p%1-%2").arg(static_cast<int>(shape.pattern)).arg(shape.colour.name().mid(1));
}

bool isHatched(const MapShape& shape) {
    return shape.text.isEmpty() && shape.pattern != Qt::SolidPattern &&
           shape.pattern != Qt::NoBrush;
}

QString patternElements(const std::vector<MapShape>& shapes) {
    std::set<QString> written;
    QString text;
    for (const MapShape& shape : shapes) {
        if (isHatched(shape) && written.insert(patternName(shape)).second) {
            text += QString("<pattern id=\"%1\" width=\"8\" height=\"8\" "
                            "patternUnits=\"userSpaceOnUse\"><path d=\"%2\" stroke=\"%3\"/>"
                            "</pattern>\n")
                        .arg(patternName(shape), patternPath(shape.pattern), shape.colour.name());
        }
    }
    return text;
}

QString elementOf(const MapShape& shape, int baseLine) {
    const QString colour = shape.colour.name();
    if (!shape.text.isEmpty()) {
        return QString("<text x=\"%1\" y=\"%2\" fill=\"%3\">%4</text>\n")
            .arg(shape.area.x())
            .arg(shape.area.y() + baseLine)
            .arg(colour, shape.text.toHtmlEscaped());
    }
    const QString fill = isHatched(shape) ? "url(#" + patternName(shape) + ")" : colour;
    const bool outline = shape.pattern == Qt::NoBrush;
    return QString("<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" fill=\"%5\"%6/>\n")
        .arg(shape.area.x())
        .arg(shape.area.y())
        .arg(shape.area.width())
        .arg(shape.area.height())
        .arg(outline ? "none" : fill, outline ? " stroke=\"" + colour + "\"" : QString());
}

} // namespace

std::string MapPicture::svg() const {
    const QString size =
        QString("width=\"%1\" height=\"%2\"").arg(size_.width()).arg(size_.height());
    QString text = "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size +
                   QString(" font-family=\"%1, sans-serif\" font-size=\"%2\">\n")
                       .arg(font_.family().toHtmlEscaped())
                       .arg(QFontInfo(font_).pixelSize()) +
                   "<title>Memory map</title>\n<rect " + size +
                   QString(" fill=\"%1\"/>\n").arg(palette_.color(QPalette::Base).name()) +
                   patternElements(shapes_);
    const int baseLine = QFontMetrics(font_).ascent();
    for (const MapShape& shape : shapes_) {
        text += elementOf(shape, baseLine);
    }
    return (text + "</svg>\n").toStdString();
}

void MapPicture::save(const MapPicture& picture, const std::filesystem::path& path) {
    const QString suffix = QString::fromStdString(path.extension().string()).toLower();
    std::string contents;
    if (suffix == ".svg") {
        contents = picture.svg();
    } else if (suffix == ".png") {
        QImage image(picture.size_, QImage::Format_RGB32);
        QPainter painter(&image);
        picture.paint(painter);
        painter.end();
        QByteArray bytes;
        QBuffer buffer(&bytes);
        image.save(&buffer, "PNG");
        contents = bytes.toStdString();
    } else {
        ERROR_Out(nullptr, "A picture is saved as .png or .svg, not as " + path.string(), 1);
        return;
    }
    if (const FileResult written = FILES_Replace(path, contents); !written.ok()) {
        ERROR_Out(nullptr,
                  ERROR_WithReason("Error writing file", path.string() + ": " + written.reason), 1);
    }
}
