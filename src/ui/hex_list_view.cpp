// The hex list: one row an area of the loaded data, under a line that sums it up.

#include "data/data_rows.h"
#include "ui/look.h"
#include "ui/text_table.h"
#include "ui/view_widget.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <array>
#include <memory>

namespace {

constexpr std::array<TextColumn, 6> kAreaColumns = {{
    {"Area", 39, "0000"},
    {"Adr.", 76, "00000000"},
    {"Len.", 76, "00000000"},
    {"Gap", 60, "000000"},
    {"Data (HEX)", 388, "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
    {"Data (ASCII)", 145, "0000000000000000"},
}};

constexpr int kCharactersColumn = kAreaColumns.size() - 1; // the last column

// A snapshot of the areas, and the row that was asked for last: a view asks for the cells of a row
// one after the other.
struct Rows {
    std::vector<AddressRange> areas;
    int current = -1;
    HexListRow row;
};

QString cellText(Rows& rows, int row, int column) {
    if (rows.current != row) {
        HEXLISTVIEW_MakeRow(rows.areas, static_cast<size_t>(row), rows.row);
        rows.current = row;
    }
    const std::array<const std::string*, kCharactersColumn> cells = {
        &rows.row.number, &rows.row.address, &rows.row.length, &rows.row.gap, &rows.row.hex};
    return column == kCharactersColumn ? LOOK_Characters(rows.row.characters)
                                       : QString::fromLatin1(*cells[static_cast<size_t>(column)]);
}

class HexListView final : public ViewWidget {
public:
    explicit HexListView(QWidget* parent)
        : ViewWidget(parent),
          table_(TEXTTABLE_Create(kAreaColumns, "Areas of the image", LOOK_FixedFont(), this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(createSummary());
        layout->addWidget(table_);
        setFocusProxy(table_);
        HexListView::refresh();
    }

    void refresh() override {
        auto rows = std::make_shared<Rows>();
        rows->areas = HEXDATA_GetAreas();
        const auto count = static_cast<int>(rows->areas.size());
        TEXTTABLE_SetRows(table_, count,
                          [rows](int row, int column) { return cellText(*rows, row, column); });
        showSummary();
    }

    std::vector<int> columnWidths() const override { return TEXTTABLE_Widths(table_); }
    void setColumnWidths(const std::vector<int>& widths) override {
        TEXTTABLE_SetWidths(table_, widths);
    }

protected:
    void changeEvent(QEvent* event) override {
        ViewWidget::changeEvent(event);
        if (event->type() == QEvent::PaletteChange) {
            colourRange();
        }
    }

private:
    // As wide as its texts need; a narrow window covers its end, as it does with the list.
    QWidget* createSummary() {
        auto* strip = new QWidget(this);
        auto* texts = new QWidget(strip);
        auto* line = new QHBoxLayout(texts);
        line->setSizeConstraint(QLayout::SetFixedSize);
        line->setContentsMargins(3, 2, 3, 2);
        line->setSpacing(2 * fontMetrics().averageCharWidth());
        for (const char* name : {"rangeTitle", "range", "checksum", "bytes"}) {
            line->addWidget(createLabel(name, texts));
        }
        label("rangeTitle")->setText("Range:");
        strip->setFixedHeight(texts->sizeHint().height());
        return strip;
    }

    static QLabel* createLabel(const char* name, QWidget* parent) {
        auto* added = new QLabel(parent);
        added->setObjectName(name);
        added->setFont(LOOK_FixedFont());
        added->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return added;
    }

    QLabel* label(const char* name) const { return findChild<QLabel*>(name); }

    void showSummary() {
        const HexListSummary summary = HEXLISTVIEW_MakeSummary();
        label("range")->setText(QString::fromStdString(summary.range));
        label("range")->setToolTip(summary.fits
                                       ? "The data lies within the selected blocks."
                                       : "The data does not lie within the selected blocks.");
        label("checksum")->setText(QString::fromStdString(summary.checksum));
        label("bytes")->setText(QString::fromStdString(summary.bytes));
        fits_ = summary.fits;
        colourRange();
    }

    void colourRange() {
        QLabel* range = label("range");
        if (range == nullptr) {
            return; // the palette was set while the view was being made
        }
        QPalette colours = palette();
        colours.setColor(QPalette::WindowText,
                         fits_ ? LOOK_GoodColour(colours) : LOOK_BadColour(colours));
        range->setPalette(colours);
    }

    QTableView* table_;
    bool fits_ = false;
};

} // namespace

ViewWidget* HEXLISTVIEW_Create(QWidget* parent) {
    return new HexListView(parent);
}
