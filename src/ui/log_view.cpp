#include "ui/log_view.h"

#include "notice/log.h"
#include "platform/event_queue.h"
#include "ui/view_widget.h"

#include <QAbstractListModel>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QListView>
#include <QPointer>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr size_t kMostLines = 20000; // the oldest go first; the file keeps them all
constexpr char kErrorStart[] = "Error: ";

struct LogLine {
    QString text; // with its stamp
    bool isError = false;
};

// The lines since the view was opened, all of them or the errors alone.
class LogModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(shown_.size());
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (role == Qt::SizeHintRole) {
            return rowSize_;
        }
        if (role != Qt::DisplayRole || !index.isValid()) {
            return {};
        }
        return lines_[shown_[static_cast<size_t>(index.row())]].text;
    }

    // Every row is as wide as the widest line, so that the list need not measure them all.
    bool widen(const QSize& size) {
        const QSize before = rowSize_;
        rowSize_ = rowSize_.expandedTo(size);
        return rowSize_ != before;
    }

    void add(const LogLine& line) {
        if (lines_.size() == kMostLines) {
            dropOldest();
        }
        lines_.push_back(line);
        if (isShown(line)) {
            const int row = rowCount();
            beginInsertRows({}, row, row);
            shown_.push_back(lines_.size() - 1);
            endInsertRows();
        }
    }

    void setErrorsOnly(bool on) {
        errorsOnly_ = on;
        showAgain();
    }

private:
    bool isShown(const LogLine& line) const { return line.isError || !errorsOnly_; }

    void showAgain() {
        beginResetModel();
        shown_.clear();
        for (size_t index = 0; index < lines_.size(); ++index) {
            if (isShown(lines_[index])) {
                shown_.push_back(index);
            }
        }
        endResetModel();
    }

    // A good part at once, so that it is rare.
    void dropOldest() {
        lines_.erase(lines_.begin(), lines_.begin() + kMostLines / 4);
        showAgain();
    }

    std::vector<LogLine> lines_;
    std::vector<size_t> shown_;
    bool errorsOnly_ = false;
    QSize rowSize_;
};

class LogView final : public ViewWidget {
public:
    explicit LogView(QWidget* parent) : ViewWidget(parent) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        list_ = new QListView(this);
        list_->setObjectName("LogList");
        list_->setAccessibleName("Log");
        list_->setModel(&model_);
        list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
        list_->setUniformItemSizes(true);
        list_->setTextElideMode(Qt::ElideNone);
        list_->setContextMenuPolicy(Qt::ActionsContextMenu);
        layout->addWidget(list_);
        setFocusProxy(list_);
        filterNote_->setObjectName("filterNote");
        filterNote_->setContentsMargins(3, 2, 3, 2);
        filterNote_->hide();
        layout->setSpacing(0);
        layout->addWidget(filterNote_);
        addActions();
    }

    void refresh() override {}

    void add(const LogLine& line) {
        const bool userSelects = list_->selectionModel()->selectedRows().size() > 1;
        constexpr QSize kSpace(10, 2);
        const QFontMetrics metrics = list_->fontMetrics();
        if (model_.widen(QSize(metrics.horizontalAdvance(line.text), metrics.height()) + kSpace)) {
            list_->doItemsLayout();
        }
        model_.add(line);
        if (!userSelects) {
            const QModelIndex last = model_.index(model_.rowCount() - 1);
            // Not the list's own, which extends the selection while somebody holds Shift.
            list_->selectionModel()->setCurrentIndex(last, QItemSelectionModel::ClearAndSelect);
            list_->scrollTo(last);
        }
    }

private:
    QAction* addListAction(const char* text, const QKeySequence& key) {
        auto* action = new QAction(text, list_);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
        list_->addAction(action);
        return action;
    }

    void addActions() {
        connect(addListAction("&Copy", QKeySequence::Copy), &QAction::triggered, this,
                [this] { copySelection(); });
        connect(addListAction("Select &All", QKeySequence::SelectAll), &QAction::triggered, list_,
                &QListView::selectAll);
        QAction* filter = addListAction("&Errors Only", QKeySequence("Ctrl+E"));
        filter->setObjectName("ErrorsOnly");
        filter->setCheckable(true);
        connect(filter, &QAction::toggled, this, [this](bool on) {
            model_.setErrorsOnly(on);
            filterNote_->setVisible(on);
            list_->scrollToBottom();
        });
    }

    void copySelection() {
        QModelIndexList rows = list_->selectionModel()->selectedRows();
        std::sort(rows.begin(), rows.end());
        QStringList lines;
        for (const QModelIndex& row : rows) {
            lines << row.data().toString();
        }
        if (!lines.isEmpty()) {
            QApplication::clipboard()->setText(lines.join('\n'));
        }
    }

    LogModel model_;
    QListView* list_ = nullptr;
    QLabel* filterNote_ = new QLabel("Errors only. Ctrl+E shows all lines.", this);
};

QPointer<QWidget> openLogView; // the frame has at most one

} // namespace

ViewWidget* LOGVIEW_Create(QWidget* parent) {
    auto* view = new LogView(parent);
    openLogView = view;
    return view;
}

void LOGVIEW_Install() {
    LOG_SetObserver([](const std::string& line, const std::string& text) {
        // A message may have several lines; here it takes one row.
        const QString row = QString::fromStdString(line).replace('\n', ' ');
        EVENTS_Post([entry = LogLine{row, text.starts_with(kErrorStart)}] {
            if (openLogView) {
                static_cast<LogView*>(openLogView.data())->add(entry);
            }
        });
    });
}

void LOGVIEW_Remove() {
    LOG_SetObserver({});
}
