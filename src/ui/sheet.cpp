#include "ui/sheet.h"

#include "device/device.h"
#include "shell/front_end.h"
#include "ui/dialogs.h"
#include "ui/mnemonics.h"
#include "ui/pages.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace {

constexpr size_t kPages = 4;

// What exists only while the sheet is open.
struct OpenSheet {
    std::vector<std::function<bool()>> pairs;
    QPushButton* applyButton = nullptr;
    QTabWidget* tabs = nullptr;
};
std::optional<OpenSheet> openSheet;

void nameButton(const QDialogButtonBox* buttons, QDialogButtonBox::StandardButton button,
                const char* name) {
    buttons->button(button)->setObjectName(name);
}

QDialogButtonBox* addButtons(QDialog& dialog, QDialogButtonBox::StandardButtons which) {
    auto* buttons = new QDialogButtonBox(which, &dialog);
    nameButton(buttons, QDialogButtonBox::Ok, "1");
    nameButton(buttons, QDialogButtonBox::Cancel, "2");
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

using Pages = std::array<SheetPage, kPages>;

// All pages commit, or none when one of them refuses.
bool applyAll(const Pages& pages) {
    const auto refuses = [](const SheetPage& page) { return page.isTouched() && !page.check(); };
    if (std::ranges::any_of(pages, refuses)) {
        return false;
    }
    for (const SheetPage& page : pages) {
        page.apply();
    }
    return true;
}

// Ctrl+Tab goes to the next page from wherever the focus is; some controls would keep it.
void addPageKeys(QTabWidget* tabs, QDialog* dialog) {
    for (const auto& [key, step] : {std::pair("Ctrl+Tab", 1), std::pair("Ctrl+Shift+Tab", -1)}) {
        auto* shortcut = new QShortcut(QKeySequence(key), dialog);
        QObject::connect(shortcut, &QShortcut::activated, tabs, [tabs, step = step] {
            tabs->setCurrentIndex((tabs->currentIndex() + step + tabs->count()) % tabs->count());
        });
    }
}

Pages makePages(QTabWidget& tabs) {
    const SharedProps working = PAGES_WorkingProps();
    const auto limits = [working] { return PASSWORD_LimitsOf(DEVICE_At(working->Device)); };
    Pages pages = {TARGETPAGE_Create(&tabs, working), SETTINGSPAGE_Create(&tabs, working),
                   COMMPAGE_Create(&tabs), PASSWORDPAGE_Create(&tabs, limits)};
    for (const SheetPage& page : pages) {
        tabs.addTab(page.widget, page.title);
    }
    return pages;
}

// One page is seen at a time, together with the tabs and the buttons.
void settleMnemonics(const Pages& pages, const QTabWidget& tabs, QWidget& buttons) {
    const Mnemonics ofTabs = MNEMONICS_OfTabs(*tabs.tabBar());
    Mnemonics taken = ofTabs;
    for (const SheetPage& page : pages) {
        taken.merge(MNEMONICS_Settle(*page.widget, ofTabs));
    }
    MNEMONICS_Settle(buttons, taken);
}

QTabWidget* addTabs(QDialog& dialog) {
    auto* tabs = new QTabWidget(&dialog);
    tabs->setObjectName("pages");
    tabs->setUsesScrollButtons(false); // the sheet is as wide as its tabs
    addPageKeys(tabs, &dialog);
    openSheet->tabs = tabs;
    return tabs;
}

QDialogButtonBox* addSheetButtons(QDialog& dialog) {
    auto* buttons = addButtons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                           QDialogButtonBox::Apply);
    nameButton(buttons, QDialogButtonBox::Apply, "apply");
    openSheet->applyButton = buttons->button(QDialogButtonBox::Apply);
    openSheet->applyButton->setEnabled(false);
    return buttons;
}

int runSheet(QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName("options");
    dialog.setWindowTitle("Options");
    QTabWidget* tabs = addTabs(dialog);
    const Pages pages = makePages(*tabs);
    QDialogButtonBox* buttons = addSheetButtons(dialog); // behind the pages in the order of Tab
    settleMnemonics(pages, *tabs, *buttons);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(tabs);
    layout->addWidget(buttons);

    bool applied = false;
    const auto apply = [&] {
        const bool accepted = applyAll(pages);
        applied = applied || accepted;
        SHEET_NotifyChange();
        return accepted;
    };
    QObject::connect(tabs, &QTabWidget::currentChanged, &dialog,
                     [&pages](int index) { pages[static_cast<size_t>(index)].activated(); });
    QObject::connect(openSheet->applyButton, &QPushButton::clicked, &dialog, apply);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        if (apply()) {
            dialog.accept();
        }
    });
    SHEET_CenterDialog(&dialog);
    dialog.exec();
    return applied ? kDialogOk : kDialogCancel;
}

} // namespace

SharedProps PAGES_WorkingProps() {
    auto working = std::make_shared<DevProps>(DEVPROPS_Get());
    working->Device = DEVICE_SelectedIndex(); // the settings may name one beyond the table
    return working;
}

int SHEET_Options(QWidget* parent) {
    if (openSheet) {
        return kDialogCancel;
    }
    openSheet.emplace();
    const int result = runSheet(parent);
    openSheet.reset();
    return result;
}

int SHEET_RunPage(QWidget* parent, const QString& objectName, const QString& caption,
                  const std::function<SheetPage(QWidget* parent)>& make) {
    QDialog dialog(parent);
    dialog.setObjectName(objectName);
    dialog.setWindowTitle(caption);
    const SheetPage page = make(&dialog);
    auto* buttons = addButtons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(page.widget, 1);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(9, 0, 9, 9);
    row->addWidget(buttons);
    layout->addLayout(row);
    MNEMONICS_Settle(dialog, {});
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        if (page.check()) {
            page.apply();
            dialog.accept();
        }
    });
    SHEET_CenterDialog(&dialog);
    return dialog.exec() == QDialog::Accepted ? kDialogOk : kDialogCancel;
}

void SHEET_TrackPair(std::function<bool()> differs) {
    if (openSheet && openSheet->pairs.size() < kPages) {
        openSheet->pairs.push_back(std::move(differs));
    }
}

void SHEET_NotifyChange() {
    if (openSheet && openSheet->applyButton != nullptr) {
        openSheet->applyButton->setEnabled(
            std::ranges::any_of(openSheet->pairs, [](const auto& differs) { return differs(); }));
    }
}

void SHEET_ShowPage(QWidget* page) {
    if (openSheet && openSheet->tabs != nullptr) {
        openSheet->tabs->setCurrentWidget(page);
    }
}

void SHEET_CenterDialog(QWidget* dialog) {
    const QWidget* parent = dialog->parentWidget();
    if (parent == nullptr) {
        return;
    }
    if (!dialog->testAttribute(Qt::WA_Resized)) {
        dialog->adjustSize(); // it has no size yet that it could keep
    }
    const QRect over = parent->window()->frameGeometry();
    dialog->move(over.x() + (over.width() - dialog->width()) / 2,
                 over.y() + (over.height() - dialog->height()) / 2);
}

int DIALOG_Options(QWidget* parent) {
    return SHEET_Options(parent);
}

int DIALOG_Target(QWidget* parent) {
    return SHEET_RunPage(parent, "600", "Target properties", [](QWidget* dialog) {
        return TARGETPAGE_Create(dialog, PAGES_WorkingProps());
    });
}

int DIALOG_Settings(QWidget* parent) {
    return SHEET_RunPage(parent, "650", "Settings", [](QWidget* dialog) {
        return SETTINGSPAGE_Create(dialog, PAGES_WorkingProps());
    });
}

int DIALOG_Communication(QWidget* parent) {
    return SHEET_RunPage(parent, "800", "Communication", COMMPAGE_Create);
}

int DIALOG_Password(QWidget* parent) {
    return SHEET_RunPage(parent, "1000", "Password", [](QWidget* dialog) {
        return PASSWORDPAGE_Create(dialog, PASSWORD_GetLimits);
    });
}
