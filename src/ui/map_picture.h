// The memory map as a picture: laid out once into shapes, which are painted in the view and written
// to files. What a shape means is told by its place and pattern and by the legend, never by its
// colour alone. User-interface thread.
#pragma once

#include "shell/memory_map.h"

#include <QFont>
#include <QPainter>
#include <QPalette>
#include <filesystem>
#include <vector>

struct MapShape {
    QRectF area;
    QColor colour;
    Qt::BrushStyle pattern = Qt::SolidPattern; // Qt::NoBrush: its outline alone
    QString text;                              // not empty: this, in the area, in place of all that
};

class MapPicture {
public:
    // `current`: the block that is framed, -1 for none.
    MapPicture(const QSize& size, const QPalette& palette, const QFont& font, int current);

    const std::vector<MapShape>& shapes() const { return shapes_; }
    void paint(QPainter& painter) const;
    // The pixel of the scale at a height of the picture; it may lie beyond the flash.
    int pixelAt(int y) const { return y - top_; }
    const MapScale& scale() const { return scale_; }

    // Writes it as .png or .svg, by the suffix; what is wrong is reported.
    static void save(const MapPicture& picture, const std::filesystem::path& path);

private:
    QRectF stripArea(int column, bool isMargin) const;
    int layOutLegend();
    void addStrip(int column, bool isMargin, const std::vector<MapFacts>& facts);
    void addBlocks(int current);
    void addLabels();
    void addText(const QRectF& area, const QString& text);
    std::string svg() const;

    QSize size_;
    QPalette palette_;
    QFont font_;
    int line_ = 0;   // height of a text
    int labels_ = 0; // width of the addresses
    int top_ = 0;    // of the flash
    MapScale scale_;
    std::vector<MapShape> shapes_;
};
