// The memory map: the flash to scale beside a table of the same blocks, which is what keys and
// screen readers work with. While it cannot be seen it does nothing.

#include "link/chip_record.h"
#include "platform/format.h"
#include "shell/front_end.h"
#include "shell/memory_map.h"
#include "shell/quick_choice.h"
#include "ui/map_picture.h"
#include "ui/text_table.h"
#include "ui/view_widget.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QToolTip>
#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace {

constexpr std::array<TextColumn, 5> kBlockColumns = {{
    {"Block", 44, ""},
    {"Addresses", 90, ""},
    {"Selected", 56, ""},
    {"Image", 110, ""},
    {"Chip", 90, ""},
}};

constexpr QSize kLeastPicture(480, 600); // of one that is saved
constexpr int kLookMs = 250;             // between two looks at what became of the chip

QString mapCell(const MapRow& row, int column) {
    const bool isBlock = row.block >= 0;
    switch (column) {
    case 0:
        return isBlock ? QString::number(row.block) : QString("none");
    case 1:
        return QString::fromStdString(formatText("%X - %X", row.range.start, row.range.last()));
    case 2:
        return isBlock ? QString(row.selected ? "yes" : "no") : QString("outside");
    case 3:
        return QString::fromStdString(row.contents);
    default:
        return QString::fromStdString(row.result);
    }
}

// The painted half. It asks for everything when it is painted first after a change.
class MapStrip : public QWidget {
public:
    MapStrip(QWidget* parent, std::function<void(uint32_t)> clicked)
        : QWidget(parent), clicked_(std::move(clicked)) {
        setObjectName("MapStrip");
        setAccessibleName("Memory map, told by the table beside it");
        setMinimumWidth(27 * fontMetrics().averageCharWidth()); // three titles and the addresses
    }

    void forget(int current) {
        current_ = current;
        picture_.reset();
        update();
    }

    MapPicture pictureOf(const QSize& size) const {
        return MapPicture(size, palette(), font(), current_);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        picture().paint(painter);
    }

    void resizeEvent(QResizeEvent*) override { picture_.reset(); }

    void changeEvent(QEvent* event) override {
        QWidget::changeEvent(event);
        picture_.reset();
    }

    void mousePressEvent(QMouseEvent* event) override {
        const AddressRange range = rangeAt(event->position().toPoint());
        if (event->button() == Qt::LeftButton && !range.empty()) {
            clicked_(range.start);
        }
    }

    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip) {
            return QWidget::event(event);
        }
        const auto* help = static_cast<QHelpEvent*>(event);
        const int pixel = picture().pixelAt(help->pos().y());
        QToolTip::showText(help->globalPos(),
                           QString::fromStdString(MEMORYMAP_Describe(picture().scale(), pixel)),
                           this);
        return true;
    }

private:
    const MapPicture& picture() {
        if (!picture_) {
            picture_.emplace(pictureOf(size()));
        }
        return *picture_;
    }

    AddressRange rangeAt(QPoint point) {
        return picture().scale().rangeAt(picture().pixelAt(point.y()));
    }

    std::function<void(uint32_t)> clicked_;
    int current_ = -1;
    std::optional<MapPicture> picture_;
};

class MemoryMapView final : public ViewWidget {
public:
    explicit MemoryMapView(QWidget* parent)
        : ViewWidget(parent),
          strip_(new MapStrip(this, [this](uint32_t address) { clickBlock(address); })),
          table_(TEXTTABLE_Create(kBlockColumns, "Blocks of the memory map", font(), this)) {
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(strip_, 1);
        layout->addWidget(table_, 2);
        setFocusProxy(table_);
        addAction("Select or &Deselect Block", QKeySequence(Qt::Key_Space), [this] { toggle(); });
        addAction("&Save Picture...", QKeySequence("Ctrl+Shift+S"), [this] { save(); });
        addAction("&Forget what is known of the chip", QKeySequence(), CHIPRECORD_Forget);
        strip_->addActions(table_->actions());
        strip_->setContextMenuPolicy(Qt::ActionsContextMenu);
        connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
                [this] { strip_->forget(currentBlock()); });
        connect(&look_, &QTimer::timeout, this, [this] {
            if (revision_ != CHIPRECORD_Revision()) {
                refresh();
            }
        });
    }

    void refresh() override {
        if (!isVisible()) {
            return; // it looks again when it is shown
        }
        revision_ = CHIPRECORD_Revision();
        rows_ = std::make_shared<const std::vector<MapRow>>(MEMORYMAP_Rows());
        TEXTTABLE_SetRows(table_, static_cast<int>(rows_->size()),
                          [rows = rows_](int row, int column) {
                              return mapCell((*rows)[static_cast<size_t>(row)], column);
                          });
        strip_->forget(currentBlock());
    }

    std::vector<int> columnWidths() const override { return TEXTTABLE_Widths(table_); }
    void setColumnWidths(const std::vector<int>& widths) override {
        TEXTTABLE_SetWidths(table_, widths);
    }

protected:
    void showEvent(QShowEvent*) override {
        look_.start(kLookMs);
        refresh();
    }
    void hideEvent(QHideEvent*) override { look_.stop(); }

private:
    void addAction(const char* text, const QKeySequence& key, std::function<void()> run) {
        auto* action = new QAction(text, table_);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, std::move(run));
        table_->addAction(action);
    }

    int currentBlock() const {
        const int row = table_->currentIndex().row();
        const bool isRow = row >= 0 && static_cast<size_t>(row) < rows_->size();
        return isRow ? (*rows_)[static_cast<size_t>(row)].block : -1;
    }

    void clickBlock(uint32_t address) {
        for (size_t row = 0; row < rows_->size(); ++row) {
            if ((*rows_)[row].block >= 0 && (*rows_)[row].range.contains(address)) {
                table_->setCurrentIndex(table_->model()->index(static_cast<int>(row), 0));
                table_->setFocus(Qt::MouseFocusReason);
                toggle();
                return;
            }
        }
    }

    void toggle() {
        if (const int block = currentBlock(); block >= 0) {
            CHOICE_ToggleBlock(block);
        }
    }

    void save() {
        const FileRequest request = {
            true,
            "Save picture",
            {{"Picture (*.png)", "*.png"}, {"Scalable picture (*.svg)", "*.svg"}},
            ""};
        if (const auto choice = FRONTEND_Get().chooseFile(request)) {
            MapPicture::save(strip_->pictureOf(strip_->size().expandedTo(kLeastPicture)),
                             choice->path);
        }
    }

    MapStrip* strip_;
    QTableView* table_;
    std::shared_ptr<const std::vector<MapRow>> rows_ =
        std::make_shared<const std::vector<MapRow>>();
    uint64_t revision_ = 0;
    QTimer look_{this};
};

} // namespace

ViewWidget* MEMORYMAPVIEW_Create(QWidget* parent) {
    return new MemoryMapView(parent);
}
