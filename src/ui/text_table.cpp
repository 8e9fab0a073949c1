#include "ui/text_table.h"

#include "ui/column_fit.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>
#include <utility>

namespace {

constexpr int kRowSpace = 4;           // pixels a row is higher than its text
constexpr int kCellSpace = 8;          // pixels a column is wider than its text
constexpr int kRowsLookedAt = 250;     // for the width that the contents need
constexpr int kWidestByContents = 600; // pixels

void copyCurrentRow(const QTableView* view) {
    const QModelIndex current = view->currentIndex();
    if (!current.isValid()) {
        return;
    }
    QStringList cells;
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        cells += current.siblingAtColumn(column).data().toString();
    }
    QGuiApplication::clipboard()->setText(cells.join('\t'));
}

void addCopyAction(QTableView* view) {
    auto* copy = new QAction("&Copy", view);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(copy, &QAction::triggered, view, [view] { copyCurrentRow(view); });
    view->addAction(copy);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
}

// A table that knows what its columns need.
class TextTable : public QTableView {
public:
    explicit TextTable(QWidget* parent)
        : QTableView(parent), fit(new ColumnFit(horizontalHeader(), viewport())) {}

    const TextTableModel& texts() const { return static_cast<const TextTableModel&>(*model()); }
    void adaptColumns();

    ColumnFit* fit;

private:
    int lengthOf(const QString& text) const;
    ColumnNeed needOf(int column) const;
};

int TextTable::lengthOf(const QString& text) const {
    return fontMetrics().horizontalAdvance(text) + kCellSpace;
}

ColumnNeed TextTable::needOf(int column) const {
    const TextColumn& description = texts().columns()[static_cast<size_t>(column)];
    const int title = horizontalHeader()->sectionSizeHint(column);
    ColumnNeed need{std::max(description.width, title),
                    std::max(title, lengthOf(description.sample))};
    const auto look = [&](int row) {
        const QString text = model()->index(row, column).data().toString();
        need.least = std::max(need.least, std::min(lengthOf(text), kWidestByContents));
        need.wanted = std::max(need.wanted, lengthOf(text));
    };
    const int rows = texts().rowCount();
    for (int row = 0; row < std::min(rows, kRowsLookedAt); ++row) {
        look(row);
    }
    if (rows > kRowsLookedAt) {
        look(rows - 1); // the longest where rows are numbered
    }
    need.wanted = std::max(need.least, std::min(need.wanted, kWidestByContents));
    return need;
}

void TextTable::adaptColumns() {
    std::vector<ColumnNeed> needs;
    for (int column = 0; column < texts().columnCount(); ++column) {
        needs.push_back(needOf(column));
    }
    fit->setNeeds(std::move(needs));
}

} // namespace

TextTableModel::TextTableModel(std::span<const TextColumn> columns, QObject* parent)
    : QAbstractTableModel(parent), columns_(columns) {
}

void TextTableModel::setRows(int count, CellText text) {
    if (count == count_ && count > 0) { // who hears the table stays where he is
        text_ = std::move(text);
        emit dataChanged(index(0, 0), index(count - 1, columnCount() - 1));
        return;
    }
    beginResetModel();
    count_ = count;
    text_ = std::move(text);
    endResetModel();
}

int TextTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

int TextTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant TextTableModel::data(const QModelIndex& index, int role) const {
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) { // a narrow column cuts it
        return text_(index.row(), index.column());
    }
    return role == Qt::TextAlignmentRole ? QVariant(Qt::AlignLeft | Qt::AlignVCenter) : QVariant();
}

QVariant TextTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    }
    return role == Qt::DisplayRole ? QVariant(columns_[static_cast<size_t>(section)].title)
                                   : QVariant();
}

QTableView* TEXTTABLE_Create(std::span<const TextColumn> columns, const char* name,
                             const QFont& font, QWidget* parent) {
    auto* view = new TextTable(parent);
    view->setAccessibleName(name);
    view->setModel(new TextTableModel(columns, view));
    view->setFont(font);
    view->setShowGrid(false);
    view->setWordWrap(false);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setTabKeyNavigation(false);
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->horizontalHeader()->setHighlightSections(false);
    view->verticalHeader()->hide();
    view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view->verticalHeader()->setMinimumSectionSize(1);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + kRowSpace);
    addCopyAction(view);
    view->adaptColumns();
    return view;
}

void TEXTTABLE_SetRows(QTableView* view, int count, TextTableModel::CellText text) {
    const int position = view->verticalScrollBar()->value();
    const int row = view->currentIndex().row();
    static_cast<TextTableModel*>(view->model())->setRows(count, std::move(text));
    static_cast<TextTable*>(view)->adaptColumns();
    if (row >= 0 && row < count) {
        view->setCurrentIndex(view->model()->index(row, 0));
    }
    view->verticalScrollBar()->setValue(position);
}

std::vector<int> TEXTTABLE_Widths(const QTableView* view) {
    return static_cast<const TextTable*>(view)->fit->toStore();
}

void TEXTTABLE_SetWidths(QTableView* view, std::span<const int> widths) {
    static_cast<TextTable*>(view)->fit->setStored(widths);
}
