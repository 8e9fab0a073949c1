#include "ui/tool_bar.h"

#include "device/device.h"
#include "notice/progress.h"
#include "serial/sio.h"
#include "shell/command_ids.h"
#include "shell/frame_rules.h"
#include "shell/quick_choice.h"
#include "ui/artwork.h"
#include "ui/frame_menu.h"

#include <QAction>
#include <QComboBox>
#include <QStyle>
#include <functional>

namespace {

struct ToolButton {
    int command;
    const char* text;
    Art icon;
};

constexpr ToolButton kButtons[] = {
    {CMD_TARGET_AUTO, "Auto", Art::toAuto},
    {CMD_TARGET_PROGRAM, "Program", Art::toChip},
    {CMD_TARGET_VERIFY, "Verify", Art::verify},
    {CMD_TARGET_READ_BACK, "Read Back", Art::fromChip},
    {CMD_TARGET_ERASE_CHIP, "Erase", Art::erase},
};
// So all of the bar is seen in a frame of the usual size, and more where there is room.
constexpr int kLeastCharacters = 6;
constexpr int kMostCharacters = 30;
constexpr ToolButton kOpen = {CMD_FILE_OPEN, "Open", Art::open};

// Asks for its entries when it is opened.
class ChoiceBox : public QComboBox {
public:
    ChoiceBox(QWidget* parent, std::function<void(QComboBox&)> fill)
        : QComboBox(parent), fill_(std::move(fill)) {
        setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        setFocusPolicy(Qt::TabFocus);
    }

    void showPopup() override {
        refill();
        QComboBox::showPopup();
    }

    void refill() {
        clear();
        fill_(*this);
    }

    // Fills in the entries anew once what they depend on is another one.
    void follow(const std::string& dependsOn) {
        if (seen_ != dependsOn) {
            seen_ = dependsOn;
            refill();
        }
    }

private:
    std::function<void(QComboBox&)> fill_;
    std::string seen_;
};

struct Tools {
    ChoiceBox* device = nullptr;
    ChoiceBox* port = nullptr;
    QAction* cancel = nullptr;
};
Tools tools;

void addButton(QToolBar* bar, const ToolButton& button) {
    const QAction* item = FRAMEMENU_Item(button.command);
    auto* action = bar->addAction(ART_Icon(button.icon), button.text);
    action->setObjectName(QString("tool%1").arg(button.command));
    action->setToolTip(QString("%1 (%2)").arg(button.text, item->shortcut().toString()));
    const auto follow = [action, item] { action->setEnabled(item->isEnabled()); };
    QObject::connect(item, &QAction::changed, action, follow);
    QObject::connect(action, &QAction::triggered, [id = button.command] { FRAMERULES_Run(id); });
    follow();
}

ChoiceBox* addChoice(QToolBar* bar, const char* name, std::function<void(QComboBox&)> fill,
                     void (*take)(const std::string&)) {
    auto* box = new ChoiceBox(bar, std::move(fill));
    box->setObjectName(name);
    box->setAccessibleName(name);
    box->setToolTip(name);
    box->setMinimumContentsLength(kLeastCharacters);
    box->setMaximumWidth(kMostCharacters * bar->fontMetrics().averageCharWidth());
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    bar->addWidget(box);
    QObject::connect(box, &QComboBox::activated, box,
                     [box, take] { take(box->currentData().toString().toStdString()); });
    return box;
}

void offerDevices(QComboBox& box) {
    for (const std::string& name : CHOICE_Devices()) {
        box.addItem(QString::fromStdString(name), QString::fromStdString(name));
    }
    box.setCurrentIndex(box.findData(QString::fromStdString(DEVICE_GetName())));
}

void offerPorts(QComboBox& box) {
    for (const PortChoice& port : CHOICE_Ports()) {
        box.addItem(QString::fromStdString(port.text), QString::fromStdString(port.name));
    }
    box.setCurrentIndex(box.findData(QString::fromStdString(SIO_PortName())));
}

} // namespace

QToolBar* TOOLBAR_Create(QWidget* parent) {
    auto* bar = new QToolBar("&Tool Bar", parent);
    bar->setObjectName("toolBar");
    bar->setMovable(false);
    const int small = bar->style()->pixelMetric(QStyle::PM_SmallIconSize);
    bar->setIconSize({small, small});
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    addButton(bar, kOpen);
    bar->addSeparator();
    tools.device = addChoice(bar, "Device", offerDevices, CHOICE_TakeDevice);
    tools.port = addChoice(bar, "Port", offerPorts, CHOICE_TakePort);
    bar->addSeparator();
    for (const ToolButton& button : kButtons) {
        addButton(bar, button);
    }
    tools.cancel = bar->addAction(ART_Icon(Art::cancel), "Cancel");
    tools.cancel->setObjectName("toolCancel");
    tools.cancel->setToolTip("Ends the command that runs");
    QObject::connect(tools.cancel, &QAction::triggered, PROGRESS_Cancel);
    TOOLBAR_Refresh();
    return bar;
}

void TOOLBAR_Detach() {
    tools = {};
}

void TOOLBAR_Refresh() {
    if (tools.cancel == nullptr) {
        return;
    }
    tools.cancel->setEnabled(PROGRESS_IsOpen() && PROGRESS_GetView().showCancel);
    const bool mayChoose = FRAMERULES_IsFree();
    for (ChoiceBox* box : {tools.device, tools.port}) {
        box->setEnabled(mayChoose);
    }
    tools.device->follow(DEVICE_GetName());
    tools.port->follow(SIO_PortName() + SIO_DeviceOfPort(SIO_GetPort()));
}
