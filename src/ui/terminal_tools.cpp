#include "ui/terminal_tools.h"

#include <QActionGroup>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QToolButton>

TerminalTools::TerminalTools(QWidget* parent, const TerminalSettings& settings, TerminalDeeds deeds)
    : QWidget(parent), settings_(settings), deeds_(std::move(deeds)), menu_(new QMenu(this)),
      send_(new QMenu("&Send", this)), choices_(new QMenu("Settin&gs", this)) {
    fillMenu();
    fillRow();
    for (QWidget* tool : onePaneTools_) {
        tool->setVisible(settings_.onePane);
    }
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
        changed();
    });
    return action;
}

template <class Choice>
QMenu* TerminalTools::addChoices(const char* text, const char* name,
                                 std::initializer_list<const char*> entries, Choice& choice) {
    auto* popup = new QMenu(text, this);
    auto* group = new QActionGroup(popup);
    int number = 0;
    for (const char* entry : entries) {
        QAction* action = popup->addAction(entry);
        action->setObjectName(QString("%1%2").arg(name).arg(number));
        action->setCheckable(true);
        action->setChecked(number == static_cast<int>(choice));
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, &choice, number] {
            choice = static_cast<Choice>(number);
            changed();
        });
        ++number;
    }
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
    menu_->addAction(addItem("&Copy", "TerminalCopy", deeds_.copy));
    menu_->addAction(addItem("Select Al&l", "TerminalSelectAll", deeds_.selectAll));
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
    row->addWidget(addButton("One P&ane", form_, nullptr));
    onePaneTools_ = {addButton("F&ind", findChild<QAction*>("TerminalFind"), nullptr),
                     addButton("&Send", nullptr, send_), addButton("&Log", log_, nullptr),
                     addButton("Settin&gs", nullptr, choices_)};
    for (QWidget* tool : onePaneTools_) {
        row->addWidget(tool);
    }
    row->addStretch(1);
}

QWidget* TerminalTools::addButton(const char* text, QAction* action, QMenu* popup) {
    auto* button = new QToolButton(this);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAutoRaise(true);
    if (popup != nullptr) {
        button->setMenu(popup);
        button->setPopupMode(QToolButton::InstantPopup);
    } else {
        button->setDefaultAction(action);
    }
    button->setText(text); // with its letter, which an action's button has not
    button->setAccessibleName(QString(text).remove('&'));
    return button;
}

void TerminalTools::changed() {
    for (QWidget* tool : onePaneTools_) {
        tool->setVisible(settings_.onePane);
    }
    deeds_.choose(settings_);
}
