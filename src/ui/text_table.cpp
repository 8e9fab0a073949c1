#include "ui/text_table.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>
#include <utility>

namespace {

constexpr int kRowSpace = 4;           // pixels a row is higher than its text
constexpr int kCellSpace = 12;         // pixels a column is wider than its text
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

int defaultWidth(QTableView* view, int column, const TextColumn& description) {
    const int sample = view->fontMetrics().horizontalAdvance(description.sample) + kCellSpace;
    const int title = view->horizontalHeader()->sectionSizeHint(column);
    int widest = 0;
    const int rows = std::min(view->model()->rowCount(), kRowsLookedAt);
    for (int row = 0; row < rows; ++row) {
        const QString text = view->model()->index(row, column).data().toString();
        widest = std::max(widest, view->fontMetrics().horizontalAdvance(text) + kCellSpace);
    }
    return std::max({description.width, sample, title, std::min(widest, kWidestByContents)});
}

} // namespace

TextTableModel::TextTableModel(std::span<const TextColumn> columns, QObject* parent)
    : QAbstractTableModel(parent), columns_(columns) {
}

void TextTableModel::setRows(int count, CellText text) {
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
    if (role == Qt::DisplayRole) {
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

QTableView* TEXTTABLE_Create(std::span<const TextColumn> columns, const QFont& font,
                             QWidget* parent) {
    auto* view = new QTableView(parent);
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
    return view;
}

void TEXTTABLE_SetRows(QTableView* view, int count, TextTableModel::CellText text) {
    const int position = view->verticalScrollBar()->value();
    const int row = view->currentIndex().row();
    static_cast<TextTableModel*>(view->model())->setRows(count, std::move(text));
    if (row >= 0 && row < count) {
        view->setCurrentIndex(view->model()->index(row, 0));
    }
    view->verticalScrollBar()->setValue(position);
}

std::vector<int> TEXTTABLE_Widths(const QTableView* view) {
    std::vector<int> widths;
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        widths.push_back(view->columnWidth(column));
    }
    return widths;
}

void TEXTTABLE_SetWidths(QTableView* view, std::span<const TextColumn> columns,
                         std::span<const int> widths) {
    for (size_t index = 0; index < columns.size(); ++index) {
        const auto column = static_cast<int>(index);
        const bool stored = index < widths.size() && widths[index] > 0;
        view->setColumnWidth(column,
                             stored ? widths[index] : defaultWidth(view, column, columns[index]));
    }
}
