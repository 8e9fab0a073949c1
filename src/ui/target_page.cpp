// The target page: device, blocks that take part in block-wise operations, oscillator frequency.

#include "device/device.h"
#include "platform/format.h"
#include "ui/pages.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int kMaxSpeedText = 100; // characters

// Tells of a click on a line and of the space key, once it has handled them itself.
class BlockList : public QListWidget {
public:
    BlockList(QWidget* parent, std::function<void()> chosen)
        : QListWidget(parent), chosen_(std::move(chosen)) {
        connect(this, &QListWidget::itemClicked, this, [this] { chosen_(); });
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        QListWidget::keyPressEvent(event);
        if (event->key() == Qt::Key_Space) {
            chosen_();
        }
    }

private:
    std::function<void()> chosen_;
};

struct TargetPage {
    SharedProps working;
    QComboBox* device = nullptr;
    QListWidget* blocks = nullptr;
    QLabel* speedLabel = nullptr;
    QLineEdit* speed = nullptr;
    QLabel* speedUnit = nullptr;
};

const DeviceRecord& chosenDevice(const TargetPage& page) {
    return DEVICE_At(page.working->Device);
}

using TargetPagePtr = std::shared_ptr<TargetPage>;

// The number that the text begins with, behind blanks and a sign; 0 without digits, the nearest
// that can be kept when it is too large.
int32_t numberAtStart(const std::string& text) {
    size_t at = text.find_first_not_of(" \t");
    if (at == std::string::npos) {
        return 0;
    }
    const bool negative = text[at] == '-';
    if (negative || text[at] == '+') {
        ++at;
    }
    int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        value = std::min<int64_t>(value * 10 + (text[at] - '0'), INT32_MAX);
    }
    return static_cast<int32_t>(negative ? -value : value);
}

int32_t enteredSpeed(const TargetPage& page) {
    return numberAtStart(page.speed->text().toStdString());
}

void showBlockStates(const TargetPage& page) {
    for (int block = 0; block < page.blocks->count(); ++block) {
        const bool selected = page.working->aBlockSelect[static_cast<size_t>(block)] != 0;
        page.blocks->item(block)->setCheckState(selected ? Qt::Checked : Qt::Unchecked);
    }
}

void fillBlocks(const TargetPage& page) {
    page.blocks->clear();
    for (const DeviceBlock& block : DEVICE_Blocks(chosenDevice(page))) {
        if (block.index >= kMaxSelectableBlocks) {
            break;
        }
        auto* item = new QListWidgetItem(
            QString::fromStdString(formatText("%X - %X", block.range.start, block.range.last())),
            page.blocks);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable); // toggled by the whole line
    }
    showBlockStates(page);
    page.blocks->setCurrentRow(0);
}

void showSpeed(const TargetPage& page) {
    const bool needed = chosenDevice(page).TimerInit != 0;
    for (QWidget* widget :
         {static_cast<QWidget*>(page.speedLabel), static_cast<QWidget*>(page.speed),
          static_cast<QWidget*>(page.speedUnit)}) {
        widget->setVisible(needed);
    }
    if (needed) {
        page.speed->setText(QString::number(page.working->Speed));
    }
}

void chooseDevice(const TargetPage& page) {
    page.working->Device = page.device->currentData().toInt();
    showSpeed(page);
    const size_t count =
        std::min(DEVICE_Blocks(chosenDevice(page)).size(), page.working->aBlockSelect.size());
    page.working->aBlockSelect.fill(0);
    std::fill_n(page.working->aBlockSelect.begin(), count, 1);
    fillBlocks(page);
    SHEET_NotifyChange();
}

void toggleCurrentBlock(const TargetPage& page) {
    const int block = page.blocks->currentRow();
    if (block >= 0) {
        int32_t& selected = page.working->aBlockSelect[static_cast<size_t>(block)];
        selected = selected == 0 ? 1 : 0;
        showBlockStates(page);
        SHEET_NotifyChange();
    }
}

void selectAllBlocks(const TargetPage& page, bool selected) {
    page.working->aBlockSelect.fill(selected ? 1 : 0);
    showBlockStates(page);
    SHEET_NotifyChange();
}

void apply(const TargetPage& page) {
    page.working->Speed = enteredSpeed(page);
    DEVPROPS_Set(*page.working);
}

bool differs(const TargetPage& page) {
    const DevProps committed = *PAGES_WorkingProps();
    DevProps entered = *page.working;
    entered.Speed = page.speed->isHidden() ? committed.Speed : enteredSpeed(page);
    return entered != committed;
}

void fillDevices(const TargetPage& page) {
    std::vector<std::pair<QString, int>> devices;
    devices.reserve(static_cast<size_t>(DEVICE_GetNumDevices()));
    for (int index = 0; index < DEVICE_GetNumDevices(); ++index) {
        devices.emplace_back(QString::fromStdString(DEVICE_GetNameAt(index)), index);
    }
    std::ranges::sort(devices, [](const auto& left, const auto& right) {
        return left.first.compare(right.first, Qt::CaseInsensitive) < 0;
    });
    for (const auto& [name, index] : devices) {
        page.device->addItem(name, index);
    }
    page.device->setCurrentIndex(page.device->findData(page.working->Device));
}

QLabel* label(const QString& text, QWidget* parent, QWidget* buddy) {
    auto* made = new QLabel(text, parent);
    made->setBuddy(buddy);
    return made;
}

void addBlockControls(const TargetPagePtr& page, QWidget* widget, QVBoxLayout* layout) {
    page->blocks = new BlockList(widget, [page] { toggleCurrentBlock(*page); });
    page->blocks->setObjectName("603");
    page->blocks->setAccessibleName("Blocks");
    layout->addWidget(label("&Select Blocks", widget, page->blocks));
    layout->addWidget(page->blocks, 1);
    auto* row = new QHBoxLayout;
    const auto addButton = [&](const QString& text, const QString& name, bool selected) {
        auto* button = new QPushButton(text, widget);
        button->setObjectName(name);
        button->setAutoDefault(false);
        QObject::connect(button, &QPushButton::clicked, widget,
                         [page, selected] { selectAllBlocks(*page, selected); });
        row->addWidget(button);
    };
    addButton("&Select all", "604", true);
    addButton("&Deselect all", "605", false);
    row->addStretch();
    layout->addLayout(row);
}

void addSpeedControls(const TargetPagePtr& page, QWidget* widget, QVBoxLayout* layout) {
    page->speed = new QLineEdit(widget);
    page->speed->setObjectName("606");
    page->speed->setMaxLength(kMaxSpeedText);
    page->speedLabel = label("&CPU Freq.[Hz]", widget, page->speed);
    page->speedLabel->setObjectName("607");
    page->speedUnit = new QLabel("[Hz]", widget);
    page->speedUnit->setObjectName("608");
    auto* row = new QHBoxLayout;
    row->addWidget(page->speedLabel);
    row->addWidget(page->speed, 1);
    row->addWidget(page->speedUnit);
    layout->addLayout(row);
    QObject::connect(page->speed, &QLineEdit::textChanged, widget, [] { SHEET_NotifyChange(); });
}

} // namespace

SheetPage TARGETPAGE_Create(QWidget* parent, SharedProps working) {
    const auto page = std::make_shared<TargetPage>();
    page->working = std::move(working);

    auto* widget = new QWidget(parent);
    widget->setObjectName("page601");
    auto* layout = new QVBoxLayout(widget);
    page->device = new QComboBox(widget);
    page->device->setObjectName("601");
    layout->addWidget(label("&Device", widget, page->device));
    layout->addWidget(page->device);
    addBlockControls(page, widget, layout);
    addSpeedControls(page, widget, layout);
    fillDevices(*page);
    fillBlocks(*page);
    showSpeed(*page);
    QObject::connect(page->device, &QComboBox::currentIndexChanged, widget,
                     [page] { chooseDevice(*page); });
    SHEET_TrackPair([page] { return differs(*page); });
    SheetPage made;
    made.title = "&Target";
    made.widget = widget;
    made.apply = [page] { apply(*page); };
    return made;
}
