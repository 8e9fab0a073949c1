#include "ui/terminal_tools.h"

#include <QActionGroup>
#include <QFileInfo>
#include <QHBoxLayout>
#include <set>

TerminalTools::TerminalTools(QWidget* parent, const TerminalSettings& settings, TerminalDeeds deeds)
    : QWidget(parent), settings_(settings), deeds_(std::move(deeds)), menu_(new QMenu(this)),
      send_(new QMenu("&Send", this)), choices_(new QMenu("Settin&gs", this)) {
    fillMenu();
    fillRow();
}

void TerminalTools::tellLog(const QString& path) {
    log_->setChecked(!path.isEmpty());
    log_->setToolTip(path.isEmpty() ? QString("Appends what is received to a file")
                                    : "Ends the log, " + path);
}

void TerminalTools::focusFirst() {
    findChild<QToolButton*>()->setFocus(Qt::BacktabFocusReason);
}

QAction* TerminalTools::addItem(const char* text, const char* name, std::function<void()> run) {
    auto* action = new QAction(text, this);
    action->setObjectName(name);
    connect(action, &QAction::triggered, this, std::move(run));
    return action;
}

QAction* TerminalTools::addCheck(const char* text, const char* name, bool& choice) {
    auto* action = new QAction(text, this);
    action->setObjectName(name);
    action->setCheckable(true);
    action->setChecked(choice);
    connect(action, &QAction::triggered, this, [this, &choice](bool on) {
        choice = on;
        deeds_.choose(settings_);
    });
    return action;
}

template <class Choice>
QMenu* TerminalTools::addChoices(const char* text, const char* name,
                                 std::initializer_list<const char*> entries, Choice& choice) {
    auto* popup = new QMenu(text, this);
    auto* group = new QActionGroup(popup);
    connect(group, &QActionGroup::triggered, this, [this, &choice](const QAction* chosen) {
        choice = static_cast<Choice>(chosen->data().toInt());
        deeds_.choose(settings_);
    });
    int number = 0;
    for (const char* entry : entries) {
        QAction* action = group->addAction(entry);
        action->setObjectName(QString("%1%2").arg(name).arg(number));
        action->setData(number);
        action->setCheckable(true);
        action->setChecked(number == static_cast<int>(choice));
        ++number;
    }
    popup->addActions(group->actions());
    return popup;
}

QMenu* TerminalTools::addRates() {
    auto* popup = new QMenu("&Rate", this);
    auto* group = new QActionGroup(popup);
    connect(group, &QActionGroup::triggered, this, [this](const QAction* chosen) {
        settings_.baudrate = chosen->data().toUInt();
        deeds_.choose(settings_);
    });
    std::set<uint32_t> rates(std::begin(kTerminalRates), std::end(kTerminalRates));
    rates.insert({0, settings_.baudrate});
    for (const uint32_t rate : rates) {
        QAction* action = group->addAction(rate == 0 ? QString("As in the &Options")
                                                     : QString("%1 Bd").arg(rate));
        action->setObjectName(QString("Rate%1").arg(rate));
        action->setData(rate);
        action->setCheckable(true);
        action->setChecked(rate == settings_.baudrate);
    }
    popup->addActions(group->actions());
    return popup;
}

void TerminalTools::fillMenu() {
    form_ = addCheck("One P&ane", "OnePane", settings_.onePane);
    form_->setToolTip("What is received and typed in one pane, in its order");
    log_ = addItem("&Log to File...", "LogToFile", deeds_.log);
    log_->setCheckable(true);
    send_->addAction(addItem("&File...", "SendFile", deeds_.sendFile));
    send_->addAction(addItem("&Hex String...", "SendHex", deeds_.sendHex));
    choices_->addAction(addCheck("Local &Echo", "Echo", settings_.echo));
    choices_->addAction(addCheck("&Time Stamps", "Stamps", settings_.stamps));
    choices_->addMenu(addChoices("&Control Bytes", "Controls",
                                 {"As &Text", "As &Pictures", "As &Hex"}, settings_.controls));
    choices_->addMenu(addChoices("E&nter Sends", "LineEnd",
                                 {"&CR (0D)", "&LF (0A)", "C&R LF (0D 0A)"}, settings_.lineEnd));
    choices_->addMenu(addRates());
    menu_->addAction(addItem("&Copy", "TerminalCopy", deeds_.copy));
    menu_->addAction(addItem("Selec&t All", "TerminalSelectAll", deeds_.selectAll));
    menu_->addAction(addItem("Clea&r", "TerminalClear", deeds_.clear));
    menu_->addAction(addItem("F&ind...", "TerminalFind", deeds_.find));
    menu_->addSeparator();
    menu_->addMenu(send_);
    menu_->addAction(log_);
    menu_->addMenu(choices_);
    menu_->addAction(form_);
}

void TerminalTools::fillRow() {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(5, 2, 5, 0);
    row->setSpacing(2);
    for (QAction* item : {form_, findChild<QAction*>("TerminalFind"), send_->menuAction(), log_,
                          choices_->menuAction()}) {
        row->addWidget(TERMINALTOOLS_CreateButton(item, this));
    }
    row->addStretch(1);
}

QToolButton* TERMINALTOOLS_CreateButton(QAction* item, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAutoRaise(true);
    if (item->menu() != nullptr) {
        button->setMenu(item->menu());
        button->setPopupMode(QToolButton::InstantPopup);
    } else {
        // Not its default action: that would take the letter away from the text.
        const auto follow = [button, item] {
            button->setCheckable(item->isCheckable());
            button->setChecked(item->isChecked());
            button->setToolTip(item->toolTip());
        };
        QObject::connect(item, &QAction::changed, button, follow);
        QObject::connect(button, &QToolButton::clicked, item, [item, follow] {
            item->trigger();
            follow(); // a click turns the button even where the item has stayed
        });
        follow();
    }
    const QString text = item->text().remove("...");
    button->setText(text);
    button->setAccessibleName(QString(text).remove('&'));
    return button;
}
