// A table of texts as the views of areas, device properties and vectors use it: rows made
// elsewhere, one line high each, columns that the user may resize.
#pragma once

#include <QAbstractTableModel>
#include <QTableView>
#include <functional>
#include <span>
#include <vector>

struct TextColumn {
    const char* title;
    int width;          // default, in pixels; less where the window is too narrow
    const char* sample; // what must fit into the column at its default width
};

// Asks for the text of a cell only when it is shown.
class TextTableModel : public QAbstractTableModel {
public:
    using CellText = std::function<QString(int row, int column)>;

    TextTableModel(std::span<const TextColumn> columns, QObject* parent);
    // Takes new rows; the old cells are forgotten.
    void setRows(int count, CellText text);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    std::span<const TextColumn> columns() const { return columns_; }
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::span<const TextColumn> columns_;
    int count_ = 0;
    CellText text_;
};

// `name`: for who hears the table instead of seeing it.
// The parent owns the view, the view its model; `columns` stays where it is. One row can be
// selected, and copied with Ctrl+C.
QTableView* TEXTTABLE_Create(std::span<const TextColumn> columns, const char* name,
                             const QFont& font, QWidget* parent);
// Shows new rows at the place where the view was.
void TEXTTABLE_SetRows(QTableView* view, int count, TextTableModel::CellText text);
// Widths in pixels for the settings; 0 for all columns that have their default widths, at which no
// text is cut.
std::vector<int> TEXTTABLE_Widths(const QTableView* view);
// Takes stored widths; 0, or one that is missing, stands for the default.
void TEXTTABLE_SetWidths(QTableView* view, std::span<const int> widths);
