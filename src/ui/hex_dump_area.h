// The scrolled part of the hex dump: column header, the visible lines, caret, selection, and typing
// over the bytes. It draws only the lines that can be seen and keeps nothing a line.
#pragma once

#include "data/data_rows.h"
#include "ui/column_fit.h"
#include "ui/dump_scroll.h"

#include <QAbstractScrollArea>
#include <algorithm>
#include <optional>

// kColumns is their number.
enum DumpColumn : int { kAddress, kHex, kCharacters, kColumns };

// The selected addresses, from the one to the other; the caret is the end that moves.
struct DumpSelection {
    uint32_t anchor = 0;
    uint32_t caret = 0;
    bool characters = false; // begun among the characters: they are what is copied
    AddressRange range() const {
        return AddressRange::upTo(std::min(anchor, caret), std::max(anchor, caret));
    }
};

// Where the next key goes. It lies within the shown range, also of an empty image.
struct DumpCaret {
    uint32_t address = 0;
    bool characters = false;            // among the characters, not the hex digits
    bool behind = false;                // the byte there was typed and is the last one
    std::optional<uint8_t> digit = {};  // the first one of a byte, typed already
    std::optional<uint8_t> before = {}; // what the image held there before that digit
};

class HexDumpArea : public QAbstractScrollArea {
public:
    explicit HexDumpArea(QWidget* parent);
    ~HexDumpArea() override;

    // Takes over the range of the image as it is now.
    void refresh();
    const AddressRange& range() const { return range_; }
    DumpScroll scroll() const;
    // The address at which the top line begins.
    uint32_t topAddress() const;

    const std::optional<DumpSelection>& selection() const { return selection_; }
    // Selects a range that lies within the shown one, and brings its caret into view.
    void select(const DumpSelection& selection);
    void selectAll();
    const DumpCaret& caret() const { return caret_; }
    // Without a selection, and brought into view; ends a row of typing.
    void placeCaret(uint32_t address);
    // Has the line of `address` at the top, as far as the end allows it.
    void showAtTop(uint32_t address);
    // The selection as text; empty without one.
    QString selectedText() const;

    QHeaderView* header() const { return header_; }
    ColumnFit& columns() const { return *columns_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void layOut();
    void adaptColumns();
    void followScrollBar(int action);
    void move(ScrollRequest request);
    void reveal(uint32_t address);
    bool extendSelection(int key);
    void setSelection(const DumpSelection& selection);
    void deselect();
    void moveCaret(const DumpCaret& caret);
    bool moveByKey(const QKeyEvent& event);
    // The place of the caret for menu and status bar.
    void tellPlace();

    bool type(const QKeyEvent& event);
    void typeDigit(uint8_t digit);
    void typeByte(uint8_t byte);
    void leaveHalfByte();
    bool mayType();
    void extendTo(QPoint point);
    std::optional<DumpSelection> hit(QPoint point) const;
    uint32_t addressAt(QPoint point, bool characters) const;

    int lineHeight() const;
    double charWidth() const;
    // Left edge of a column's text, in the viewport.
    int textLeft(int column) const;
    QRectF cells(int column, const AddressRange& shown, uint32_t start, int top) const;
    void drawCaret(QPainter& painter, uint32_t start, int top) const;
    void drawCaretBlock(QPainter& painter, const QRectF& cell) const;
    void drawLine(QPainter& painter, int row, uint32_t line);
    void drawDifferences(QPainter& painter, uint32_t start, int top) const;
    void drawDifference(QPainter& painter, int column, const QString& text, const QRectF& place,
                        bool isSelected) const;
    void drawColumn(QPainter& painter, int column, int top, const QString& text,
                    const QRectF& selected) const;

    AddressRange range_;
    DumpLine texts_; // of the line being drawn
    std::optional<DumpSelection> selection_;
    DumpCaret caret_;
    QHeaderView* header_;
    ColumnFit* columns_;
};
