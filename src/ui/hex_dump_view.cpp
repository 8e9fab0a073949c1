// The hex dump: the loaded data as lines of sixteen bytes, with going to an address, finding,
// selecting and copying.

#include "data/data_find.h"
#include "notice/error.h"
#include "platform/format.h"
#include "shell/command_ids.h"
#include "shell/comparison.h"
#include "shell/front_end.h"
#include "ui/find_bar.h"
#include "ui/frame_menu.h"
#include "ui/hex_dump_area.h"
#include "ui/view_widget.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr char kGoToTitle[] = "Go to Address";

class HexDumpView final : public ViewWidget {
public:
    explicit HexDumpView(QWidget* parent)
        : ViewWidget(parent), area_(new HexDumpArea(this)),
          findBar_(FINDBAR_Create(
              this,
              [this](const std::vector<uint8_t>& pattern, bool forward) {
                  return find(pattern, forward);
              },
              [this] { area_->setFocus(Qt::OtherFocusReason); })) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(area_, 1);
        layout->addWidget(note_);
        layout->addWidget(findBar_);
        setFocusProxy(area_);
        note_->setObjectName("comparisonNote");
        note_->setContentsMargins(3, 2, 3, 2);
        note_->setTextFormat(Qt::PlainText);
        note_->setWordWrap(true);
        showNote();
        addAction("&Copy", QKeySequence::Copy, [this] { copy(); });
        addAction("Select &All", QKeySequence::SelectAll, [this] { area_->selectAll(); });
        addAction("&Go to Address...", QKeySequence("Ctrl+G"), [this] { goTo(); });
        addAction("&Find...", QKeySequence::Find, [this] { FINDBAR_Open(findBar_); });
        addMenuItems();
        area_->setContextMenuPolicy(Qt::ActionsContextMenu);
    }

    void refresh() override {
        area_->refresh();
        showNote();
    }

    void showBytes(const AddressRange& range) override {
        const AddressRange& shown = area_->range();
        const uint32_t first = std::max(range.start, shown.start);
        const uint64_t end = std::min(range.end, shown.end);
        if (first < end) {
            area_->select({static_cast<uint32_t>(end - 1), first, area_->caret().characters});
        } else if (range.empty() && shown.contains(range.start)) {
            area_->placeCaret(range.start);
        }
    }

    std::vector<int> columnWidths() const override { return area_->columns().toStore(); }
    void setColumnWidths(const std::vector<int>& widths) override {
        area_->columns().setStored(widths);
    }

private:
    // Reached by its shortcut from the dump and from the find bar's buttons alike, but for what a
    // line edit does with the same keys.
    void addAction(const QString& text, const QKeySequence& keys, std::function<void()> run) {
        auto* action = new QAction(text, area_);
        action->setShortcut(keys);
        const bool ofLineEdits = keys == QKeySequence(QKeySequence::Copy) ||
                                 keys == QKeySequence(QKeySequence::SelectAll);
        action->setShortcutContext(ofLineEdits ? Qt::WidgetShortcut
                                               : Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, std::move(run));
        area_->addAction(action);
        if (!ofLineEdits) {
            QWidget::addAction(action);
        }
    }

    // The edit commands of the frame's menu, with their states.
    void addMenuItems() {
        auto* separator = new QAction(area_);
        separator->setSeparator(true);
        for (QAction* item :
             {separator, FRAMEMENU_SubmenuOf(CMD_EDIT_COPY_HEX), FRAMEMENU_Item(CMD_EDIT_PASTE_HEX),
              FRAMEMENU_Item(CMD_EDIT_FILL), FRAMEMENU_Item(CMD_EDIT_INSERT_FILE),
              FRAMEMENU_Item(CMD_EDIT_UNDO), FRAMEMENU_Item(CMD_EDIT_REDO)}) {
            if (item != nullptr) {
                area_->addAction(item);
            }
        }
    }

    void copy() {
        const auto& selection = area_->selection();
        if (!selection) {
            return;
        }
        if (selection->range().size() > kMaxCopiedBytes) {
            ERROR_Ask(static_cast<QWidget*>(this),
                      formatText("At most %u bytes can be copied at once.", kMaxCopiedBytes),
                      "Copy", BOX_ICON_INFORMATION);
            return;
        }
        QGuiApplication::clipboard()->setText(area_->selectedText());
    }

    // Asks until the address lies in the data or the user cancels.
    void goTo() {
        ValueRequest request;
        request.maximum = INT32_MAX;
        request.title = kGoToTitle;
        request.label0 = "Address (Hex):";
        request.value0 = static_cast<int32_t>(startOfSearch());
        while (FRONTEND_Get().editValue(request) == kDialogOk) {
            const AddressRange& range = area_->range();
            const auto address = static_cast<uint32_t>(request.value0.value_or(0));
            if (request.value0 && range.contains(address)) {
                area_->showAtTop(address);
                area_->select({address, address});
                return;
            }
            ERROR_Ask(static_cast<QWidget*>(this),
                      formatText("The address must be within %X - %X", range.start, range.last()),
                      kGoToTitle, BOX_ICON_INFORMATION);
        }
    }

    // Under the dump, as long as there is a comparison.
    void showNote() {
        const std::string text = COMPARISON_Note();
        note_->setText(QString::fromStdString(text));
        note_->setVisible(!text.empty());
    }

    uint32_t startOfSearch() const {
        return area_->selection() ? area_->selection()->range().start : area_->caret().address;
    }

    QString find(const std::vector<uint8_t>& pattern, bool forward) {
        area_->refresh(); // what is found must lie in what is shown
        const std::vector<AddressRange> areas = HEXDATA_GetAreas();
        const uint64_t start = uint64_t{startOfSearch()} + (forward && area_->selection() ? 1 : 0);
        const auto search = [&](uint64_t from) {
            return forward ? DATAFIND_Next(areas, pattern, static_cast<uint32_t>(from))
                           : DATAFIND_Previous(areas, pattern, from);
        };
        std::optional<uint32_t> found;
        if (start <= UINT32_MAX) {
            found = search(start);
        }
        QString message;
        if (!found) {
            found = search(forward ? 0 : uint64_t{1} << 32);
            message = forward ? "Continued from the start" : "Continued from the end";
        }
        if (!found) {
            return "Not found";
        }
        const auto length = static_cast<uint32_t>(pattern.size());
        area_->select({*found + length - 1, *found});
        return message;
    }

    HexDumpArea* area_;
    QWidget* findBar_;
    QLabel* note_ = new QLabel(this);
};

} // namespace

ViewWidget* HEXDUMPVIEW_Create(QWidget* parent) {
    return new HexDumpView(parent);
}
