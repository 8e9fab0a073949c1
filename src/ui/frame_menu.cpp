#include "ui/frame_menu.h"

#include "persist/mru.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"

#include <QMdiSubWindow>
#include <algorithm>
#include <string_view>
#include <vector>

namespace {

struct RecentSection {
    QMenu* menu = nullptr;
    QAction* end = nullptr; // the entries stand before it
    int list = 0;
    int firstId = 0;
    std::vector<QAction*> entries;
};

std::vector<QAction*> commands; // their data is the identifier
std::vector<RecentSection> recentSections;
std::vector<QMenu*> submenus; // of commands
std::vector<QAction*> windowEntries;
QMenu* windowMenu = nullptr;
QMdiArea* windowArea = nullptr;
std::function<void(int)> runCommand;
std::function<bool(int)> mayRunNow;

QAction* createAction(const QString& text, int id, QObject* parent) {
    auto* action = new QAction(text, parent);
    action->setData(id);
    action->setObjectName(QString::number(id));
    action->setMenuRole(QAction::NoRole);
    QObject::connect(action, &QAction::triggered, [id] {
        // A check mark shows a state of the program; choosing the item does not turn it.
        FRAMEMENU_Update();
        runCommand(id);
    });
    return action;
}

QAction* createCommand(const Command& row, QObject* parent) {
    QString text = row.text;
    const QString key = row.key;
    if (!key.isEmpty()) {
        text += '\t' + key;
    }
    QAction* action = createAction(text, row.id, parent);
    action->setShortcut(QKeySequence(key));
    action->setCheckable(row.view.has_value() || row.isOn != nullptr);
    commands.push_back(action);
    return action;
}

QMenu* submenuOf(QMenu* menu, const QString& title) {
    if (submenus.empty() || submenus.back()->title() != title) {
        submenus.push_back(menu->addMenu(title));
    }
    return submenus.back();
}

void addItem(QMenu* menu, const Command& row) {
    if (*row.under != '\0') {
        QMenu* submenu = submenuOf(menu, row.under);
        submenu->addAction(createCommand(row, submenu));
    } else if (row.id == 0) {
        menu->addSeparator();
    } else if (row.recent.open != nullptr) {
        recentSections.push_back({menu, menu->addSeparator(), row.recent.list, row.id, {}});
    } else {
        menu->addAction(createCommand(row, menu));
    }
}

// "&1 path" with the path's own ampersands shown as such.
QString entryText(int list, int index) {
    const QString text = QString::fromStdString(MRU_MenuText(list, index));
    return text.left(1) + text.mid(1).replace("&", "&&");
}

void updateRecent(RecentSection& section) {
    qDeleteAll(section.entries);
    section.entries.clear();
    const auto count = static_cast<int>(MRU_GetEntries(section.list).size());
    for (int index = 0; index < count; ++index) {
        QAction* action =
            createAction(entryText(section.list, index), section.firstId + index, section.menu);
        action->setEnabled(COMMAND_IsEnabled(section.firstId + index) &&
                           mayRunNow(section.firstId + index));
        section.menu->insertAction(section.end, action);
        section.entries.push_back(action);
    }
}

void updateWindowList() {
    qDeleteAll(windowEntries);
    windowEntries.clear();
    const QList<QMdiSubWindow*> windows = windowArea->subWindowList(QMdiArea::CreationOrder);
    if (!windows.isEmpty()) {
        windowEntries.push_back(windowMenu->addSeparator());
    }
    int number = 0;
    for (QMdiSubWindow* window : windows) {
        const QString title = window->windowTitle().replace("&", "&&");
        QAction* action = windowMenu->addAction(QString("&%1 %2").arg(++number).arg(title));
        action->setCheckable(true);
        action->setChecked(window == windowArea->activeSubWindow());
        QObject::connect(action, &QAction::triggered, window, [window] {
            if (window->isMinimized()) {
                window->showNormal();
            }
            windowArea->setActiveSubWindow(window);
        });
        windowEntries.push_back(action);
    }
}

void applyRules() {
    for (QAction* action : commands) {
        const int id = action->data().toInt();
        action->setEnabled(COMMAND_IsEnabled(id) && mayRunNow(id));
        action->setChecked(COMMAND_IsChecked(id));
    }
    for (const QMenu* submenu : submenus) {
        submenu->menuAction()->setEnabled(
            std::ranges::any_of(submenu->actions(), &QAction::isEnabled));
    }
}

bool editsImage(const QAction& action) {
    const int id = action.data().toInt();
    return id == CMD_EDIT_UNDO || id == CMD_EDIT_REDO;
}

// Whether an item whose keys edit, or one of the others, has this key.
bool isKeyOf(bool editing, int key, Qt::KeyboardModifiers modifiers) {
    const QKeySequence pressed(
        QKeyCombination(modifiers & ~Qt::KeypadModifier, static_cast<Qt::Key>(key)));
    return std::ranges::any_of(commands, [&](const QAction* action) {
        return editsImage(*action) == editing && !action->shortcut().isEmpty() &&
               action->shortcut() == pressed;
    });
}

// When a popup opens; the entries of a recent list must not go while one of them is being chosen.
void popupOpens() {
    FRAMEMENU_Update();
    for (RecentSection& section : recentSections) {
        updateRecent(section);
    }
    updateWindowList();
}

} // namespace

void FRAMEMENU_Build(QMenuBar* bar, QMdiArea* area, std::function<void(int)> run,
                     std::function<bool(int)> mayRun) {
    windowArea = area;
    runCommand = std::move(run);
    mayRunNow = std::move(mayRun);
    for (const CommandPopup& popup : COMMAND_Popups()) {
        if (popup.isCommand) {
            bar->addAction(createCommand(popup.items.front(), bar));
            continue;
        }
        QMenu* menu = bar->addMenu(popup.text);
        menu->setObjectName(popup.text);
        for (const Command& row : popup.items) {
            addItem(menu, row);
        }
        if (std::string_view(popup.text) == "&Window") {
            windowMenu = menu;
        }
        QObject::connect(menu, &QMenu::aboutToShow, popupOpens);
    }
}

void FRAMEMENU_Update() {
    applyRules();
    for (const RecentSection& section : recentSections) {
        for (QAction* action : section.entries) {
            const int id = action->data().toInt();
            action->setEnabled(COMMAND_IsEnabled(id) && mayRunNow(id));
        }
    }
}

void FRAMEMENU_Exit() {
    commands.clear();
    recentSections.clear();
    submenus.clear();
    windowEntries.clear();
    windowMenu = nullptr;
    windowArea = nullptr;
}

QAction* FRAMEMENU_Item(int id) {
    const auto found =
        std::ranges::find_if(commands, [id](const QAction* item) { return item->data() == id; });
    return found == commands.end() ? nullptr : *found;
}

QAction* FRAMEMENU_SubmenuOf(int id) {
    const QAction* item = FRAMEMENU_Item(id);
    const auto* submenu = item != nullptr ? qobject_cast<QMenu*>(item->parent()) : nullptr;
    return submenu != nullptr ? submenu->menuAction() : nullptr;
}

void FRAMEMENU_AddToggle(QAction* toggle) {
    windowMenu->addSeparator();
    windowMenu->addAction(toggle);
}

bool FRAMEMENU_IsAccelerator(int key, Qt::KeyboardModifiers modifiers) {
    return isKeyOf(false, key, modifiers);
}

bool FRAMEMENU_IsEditKey(int key, Qt::KeyboardModifiers modifiers) {
    return isKeyOf(true, key, modifiers);
}
