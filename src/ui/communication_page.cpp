// The communication page: port, rate, communication log.

#include "link/target_link.h"
#include "notice/error.h"
#include "platform/port_list.h"
#include "platform/serial_port.h"
#include "serial/sio.h"
#include "ui/pages.h"
#include "ui/port_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <array>
#include <iterator>
#include <set>

namespace {

constexpr uint32_t kRateWhenUnknown = 57600;
constexpr int kShownOfPort = 24; // characters

struct CommPage {
    SioConfig working;
    QComboBox* rate = nullptr;
    QComboBox* port = nullptr;
    QCheckBox* logging = nullptr;
    QLabel* device = nullptr;
};

// Reads a COM number, with or without "COM", or the path or URL of a device; what is wrong with the
// text, empty when nothing is.
std::string readPort(const QString& text, SioConfig& config) {
    const QString trimmed = text.trimmed();
    const std::string device = trimmed.toStdString();
    if (SERIALPORT_IsDeviceName(device)) {
        config.Port = 0;
        config.Device = device;
        return SERIALPORT_NameProblem(device);
    }
    const bool isNamed = trimmed.startsWith("COM", Qt::CaseInsensitive);
    bool isNumber = false;
    const uint32_t port = (isNamed ? trimmed.mid(3) : trimmed).toUInt(&isNumber);
    if (!isNumber || port < 1 || port > kMaxComPort) {
        return "The port is a number from 1 to 20, a path as /dev/ttyUSB0 or a URL as "
               "rfc2217://host:port";
    }
    config.Port = port;
    config.Device.clear();
    return {};
}

void showDevice(const CommPage& page) {
    SioConfig typed;
    const std::string problem = readPort(page.port->currentText(), typed);
    const std::string text = !problem.empty()       ? problem
                             : typed.Device.empty() ? PORTTEXT_DeviceOf(typed.Port)
                                                    : PORTTEXT_State(typed.Device);
    page.device->setText(QString::fromStdString(text));
}

bool check(CommPage& page, QWidget* widget) {
    const std::string problem = readPort(page.port->currentText(), page.working);
    if (!problem.empty()) {
        SHEET_ShowPage(widget); // the message is about what stands there
        ERROR_Out(widget->window(), problem, 1);
    }
    return problem.empty();
}

void apply(const CommPage& page) {
    if (page.working.Logging != SIO_GetLogging()) {
        SIO_SetLogging(page.working.Logging);
    }
    if (page.working != SIO_GetConfig()) {
        TARGET_Disconnect();
        SIO_SetConfig(page.working);
    }
}

// The usual rates and, in its place between them, the one that is set.
void fillRates(CommPage& page) {
    std::set<uint32_t> rates(std::begin(kBaudrates), std::end(kBaudrates));
    if (page.working.Baudrate == 0) {
        page.working.Baudrate = kRateWhenUnknown;
    }
    rates.insert(page.working.Baudrate);
    for (const uint32_t rate : rates) {
        page.rate->addItem(QString::number(rate), rate);
    }
    page.rate->setCurrentIndex(page.rate->findData(page.working.Baudrate));
}

void fillPorts(const CommPage& page) {
    for (uint32_t port = 1; port <= kMaxComPort; ++port) {
        page.port->addItem(QString::number(port));
        page.port->setItemData(page.port->count() - 1,
                               QString::fromStdString(PORTTEXT_DeviceOf(port)), Qt::ToolTipRole);
    }
    for (const PresentPort& present : PORTLIST_Present()) {
        page.port->addItem(
            QString::fromStdString(present.stableName.empty() ? present.path : present.stableName));
        page.port->setItemData(page.port->count() - 1,
                               QString::fromStdString(PORTTEXT_State(present.path)),
                               Qt::ToolTipRole);
    }
    const bool known = page.working.Port >= 1 && page.working.Port <= kMaxComPort;
    page.port->setCurrentIndex(known ? static_cast<int>(page.working.Port) - 1 : 0);
    if (!page.working.Device.empty()) {
        page.port->setCurrentText(QString::fromStdString(page.working.Device));
    }
}

void addControls(CommPage& page, QWidget* widget) {
    auto* layout = new QFormLayout(widget);
    page.rate = new QComboBox(widget);
    page.rate->setObjectName("801");
    page.port = new QComboBox(widget);
    page.port->setObjectName("802");
    page.port->setEditable(true);
    page.port->setInsertPolicy(QComboBox::NoInsert);
    page.port->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    page.port->setMinimumContentsLength(kShownOfPort);
    page.port->setToolTip("A number, the path of a device or the URL of a port server");
    page.device = new QLabel(widget);
    page.device->setObjectName("device");
    page.device->setTextFormat(Qt::PlainText);
    page.device->setWordWrap(true); // names by id are long
    page.device->setMinimumWidth(36 * widget->fontMetrics().averageCharWidth());
    page.device->setTextInteractionFlags(Qt::TextSelectableByMouse);
    page.logging = new QCheckBox("&Enable logging", widget);
    page.logging->setObjectName("803");
    layout->addRow("&Baudrate:", page.rate);
    layout->addRow("&COM-Port:", page.port);
    layout->addRow("Device:", page.device);
    layout->addRow(page.logging);
}

} // namespace

SheetPage COMMPAGE_Create(QWidget* parent) {
    const auto page = std::make_shared<CommPage>();
    page->working = SIO_GetConfig();
    auto* widget = new QWidget(parent);
    widget->setObjectName("page801");
    addControls(*page, widget);
    fillRates(*page);
    fillPorts(*page);
    page->logging->setChecked(page->working.Logging != 0);
    showDevice(*page);
    SHEET_TrackPair([page] { return page->working != SIO_GetConfig(); });
    QObject::connect(page->logging, &QCheckBox::clicked, widget, [page](bool checked) {
        page->working.Logging = checked ? 1 : 0;
        SHEET_NotifyChange();
    });
    QObject::connect(page->rate, &QComboBox::currentIndexChanged, widget, [page](int index) {
        page->working.Baudrate = page->rate->itemData(index).toUInt();
        SHEET_NotifyChange();
    });
    QObject::connect(page->port, &QComboBox::editTextChanged, widget, [page](const QString& text) {
        readPort(text, page->working);
        showDevice(*page);
        SHEET_NotifyChange();
    });
    SheetPage made;
    made.title = "&Communication";
    made.widget = widget;
    made.check = [page, widget] { return check(*page, widget); };
    made.apply = [page] { apply(*page); };
    return made;
}
