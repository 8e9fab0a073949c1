// The communication page: port, rate, communication log.

#include "link/target_link.h"
#include "serial/sio.h"
#include "ui/pages.h"
#include "ui/port_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <array>
#include <iterator>

namespace {

constexpr int kRateWhenUnknown = 5; // index of 57600

struct CommPage {
    SioConfig working;
    QComboBox* rate = nullptr;
    QComboBox* port = nullptr;
    QCheckBox* logging = nullptr;
    QLabel* device = nullptr;
};

void showDevice(const CommPage& page) {
    const auto port = static_cast<uint32_t>(page.port->currentIndex() + 1);
    page.device->setText(QString::fromStdString(PORTTEXT_DeviceOf(port)));
}

void readControls(CommPage& page) {
    page.working.Logging = page.logging->isChecked() ? 1 : 0;
    page.working.Baudrate = kBaudrates[page.rate->currentIndex()];
    page.working.Port = static_cast<uint32_t>(page.port->currentIndex() + 1);
}

void apply(CommPage& page) {
    readControls(page);
    if (page.working.Logging != SIO_GetLogging()) {
        SIO_SetLogging(page.working.Logging);
    }
    if (page.working != SIO_GetConfig()) {
        TARGET_Disconnect();
        SIO_SetConfig(page.working);
    }
}

void fillRates(const CommPage& page) {
    int selected = kRateWhenUnknown;
    for (const uint32_t rate : kBaudrates) {
        if (rate == page.working.Baudrate) {
            selected = page.rate->count();
        }
        page.rate->addItem(QString::number(rate));
    }
    page.rate->setCurrentIndex(selected);
}

void fillPorts(const CommPage& page) {
    for (uint32_t port = 1; port <= kMaxComPort; ++port) {
        page.port->addItem(QString::number(port));
    }
    const bool known = page.working.Port >= 1 && page.working.Port <= kMaxComPort;
    page.port->setCurrentIndex(known ? static_cast<int>(page.working.Port) - 1 : 0);
}

void addControls(CommPage& page, QWidget* widget) {
    auto* layout = new QFormLayout(widget);
    page.rate = new QComboBox(widget);
    page.rate->setObjectName("801");
    page.port = new QComboBox(widget);
    page.port->setObjectName("802");
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
        page->working.Baudrate = kBaudrates[index];
        SHEET_NotifyChange();
    });
    QObject::connect(page->port, &QComboBox::currentIndexChanged, widget, [page](int index) {
        page->working.Port = static_cast<uint32_t>(index + 1);
        showDevice(*page);
        SHEET_NotifyChange();
    });
    SheetPage made;
    made.title = "&Communication";
    made.widget = widget;
    made.apply = [page] {
        apply(*page);
        return true;
    };
    return made;
}
