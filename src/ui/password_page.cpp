// The password page: how the boot ROM's password is entered, and the addresses sent with it.

#include "link/password.h"
#include "notice/error.h"
#include "persist/hex_text.h"
#include "platform/format.h"
#include "ui/pages.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <utility>

namespace {

constexpr int kMaxAddressText = 254; // characters

struct PasswordPage {
    std::function<PasswordLimits()> limits;
    PasswordSettings working; // its bytes are formed when it is applied
    QString committedText;    // the committed bytes as the page shows them
    uint32_t areaStart = 0;   // of the limits that the addresses were last held against
    bool countTyped = false;
    bool compareTyped = false;
    QWidget* widget = nullptr;
    QLineEdit* count = nullptr;
    QLineEdit* compare = nullptr;
    QLabel* countLabel = nullptr;
    QLabel* compareLabel = nullptr;
    QLineEdit* password = nullptr;
    QCheckBox* fill = nullptr;
    QCheckBox* hexmode = nullptr;
};
using PasswordPagePtr = std::shared_ptr<PasswordPage>;

QString shownText(const PasswordSettings& settings) {
    if (settings.FillFF) {
        return {};
    }
    return settings.Hexmode ? QString::fromStdString(HEXTEXT_FromBytes(settings.Password))
                            : QString::fromLatin1(QByteArrayView(settings.Password));
}

bool differs(const PasswordPage& page, const PasswordSettings& working) {
    const PasswordSettings committed = PASSWORD_Get();
    return working.AdrCount != committed.AdrCount || working.AdrCompare != committed.AdrCompare ||
           working.FillFF != committed.FillFF || working.Hexmode != committed.Hexmode ||
           (!working.FillFF && page.password->text() != page.committedText);
}

// An address that was never given is the start of the device's password area.
void fillMissingAddresses(PasswordPage& page) {
    const PasswordLimits limits = page.limits();
    page.areaStart = limits.AreaStart;
    for (uint32_t* address : {&page.working.AdrCount, &page.working.AdrCompare}) {
        if (*address == 0 && limits.AreaSize != 0) {
            *address = limits.AreaStart;
        }
    }
}

// The target page may have chosen a device with another password area since. An address that was
// the start of the area before, or lies outside the new one, is its start unless it was typed here.
void followDevice(PasswordPage& page) {
    const PasswordLimits limits = page.limits();
    const uint32_t before = std::exchange(page.areaStart, limits.AreaStart);
    if (before == limits.AreaStart) {
        return;
    }
    const auto follow = [&](uint32_t& address, bool isTyped) {
        const bool isInside = address - limits.AreaStart < limits.AreaSize;
        if (!isTyped && (!isInside || address == before)) {
            address = limits.AreaStart;
        }
    };
    if (limits.AreaSize != 0 && limits.AreaStart != 0) {
        follow(page.working.AdrCount, page.countTyped);
        follow(page.working.AdrCompare, page.compareTyped);
    }
}

bool isTouched(const PasswordPage& page) {
    PasswordSettings ofDevice = page.working;
    const PasswordSettings committed = PASSWORD_Get();
    ofDevice.AdrCount = page.countTyped ? ofDevice.AdrCount : committed.AdrCount;
    ofDevice.AdrCompare = page.compareTyped ? ofDevice.AdrCompare : committed.AdrCompare;
    return differs(page, ofDevice);
}

void showAddress(QLineEdit* edit, uint32_t address) {
    const QSignalBlocker quiet(edit);
    edit->setText(QString::fromStdString(formatText("%X", address)));
}

void showAddresses(const PasswordPage& page) {
    const bool used = page.limits().AreaSize != 0;
    for (QWidget* control :
         {static_cast<QWidget*>(page.count), static_cast<QWidget*>(page.compare),
          static_cast<QWidget*>(page.countLabel), static_cast<QWidget*>(page.compareLabel)}) {
        control->setVisible(used);
    }
    if (used) {
        showAddress(page.count, page.working.AdrCount);
        showAddress(page.compare, page.working.AdrCompare);
    }
}

void report(const PasswordPage& page, const std::string& message) {
    SHEET_ShowPage(page.widget); // the message is about what stands there
    ERROR_Out(page.widget->window(), message, 1);
}

// An empty text is address 0; one that is no number is reported and changes nothing.
void readAddress(const PasswordPage& page, const QString& text, uint32_t& address) {
    std::string error;
    const int32_t value = HEXTEXT_ToValue(text.toStdString(), error);
    if (error.empty()) {
        address = static_cast<uint32_t>(value);
    } else {
        report(page, error);
    }
    SHEET_NotifyChange();
}

void enableForFill(const PasswordPage& page) {
    const bool fill = page.working.FillFF;
    if (fill) {
        page.password->clear();
    }
    page.password->setEnabled(!fill);
    page.hexmode->setEnabled(!fill);
}

// The message that refuses the entered settings, or none; their bytes are formed on the way. The
// addresses are judged before the password is.
std::optional<std::string> checkEntered(const PasswordPage& page, PasswordSettings& entered) {
    PasswordSettings addressesOnly = entered;
    addressesOnly.FillFF = true;
    if (auto message = PASSWORD_Validate(addressesOnly, page.limits())) {
        return message;
    }
    if (!entered.FillFF) {
        std::string error = PASSWORD_FormBytes(entered, page.password->text().toStdString());
        if (!error.empty()) {
            return error;
        }
    }
    return PASSWORD_Validate(entered, page.limits());
}

bool check(PasswordPage& page) {
    followDevice(page);
    PasswordSettings entered = page.working;
    const auto message = checkEntered(page, entered);
    if (message) {
        report(page, *message);
    }
    return !message;
}

void apply(PasswordPage& page) {
    followDevice(page);
    if (isTouched(page)) {
        checkEntered(page, page.working);
    } else if (page.working.FillFF) {
        PASSWORD_FillFF(page.working, page.limits());
    }
    page.committedText = shownText(page.working);
    PASSWORD_Set(page.working);
}

void addAddress(const PasswordPagePtr& page, QFormLayout* layout, QLineEdit*& edit, QLabel*& label,
                uint32_t PasswordSettings::*address, bool PasswordPage::*isTyped,
                std::pair<const char*, const char*> names, const QString& text) {
    edit = new QLineEdit(page->widget);
    edit->setObjectName(names.first);
    edit->setMaxLength(kMaxAddressText);
    label = new QLabel(text, page->widget);
    label->setObjectName(names.second);
    label->setBuddy(edit);
    layout->addRow(label, edit);
    QObject::connect(edit, &QLineEdit::textChanged, page->widget,
                     [page, address, isTyped](const QString& entered) {
                         (*page).*isTyped = true;
                         readAddress(*page, entered, page->working.*address);
                     });
}

void addPassword(const PasswordPagePtr& page, QFormLayout* layout) {
    page->password = new QLineEdit(page->widget);
    page->password->setObjectName("1003");
    page->password->setMinimumWidth(32 * page->widget->fontMetrics().averageCharWidth());
    page->fill = new QCheckBox("&Fill with 0xFF", page->widget);
    page->fill->setObjectName("1004");
    page->hexmode = new QCheckBox("&Hexmode", page->widget);
    page->hexmode->setObjectName("1005");
    layout->addRow("Pass&word", page->password);
    layout->addRow(page->fill);
    layout->addRow(page->hexmode);
}

void fillControls(const PasswordPage& page) {
    showAddresses(page);
    page.fill->setChecked(page.working.FillFF);
    page.hexmode->setChecked(page.working.Hexmode);
    page.password->setText(page.committedText);
    enableForFill(page);
}

void connectControls(const PasswordPagePtr& page) {
    QObject::connect(page->password, &QLineEdit::textChanged, page->widget,
                     [] { SHEET_NotifyChange(); });
    QObject::connect(page->hexmode, &QCheckBox::clicked, page->widget, [page](bool checked) {
        page->working.Hexmode = checked;
        SHEET_NotifyChange();
    });
    QObject::connect(page->fill, &QCheckBox::clicked, page->widget, [page](bool checked) {
        page->working.FillFF = checked;
        enableForFill(*page);
        SHEET_NotifyChange();
    });
}

} // namespace

SheetPage PASSWORDPAGE_Create(QWidget* parent, std::function<PasswordLimits()> limits) {
    const auto page = std::make_shared<PasswordPage>();
    page->limits = std::move(limits);
    page->working = PASSWORD_Get();
    page->committedText = shownText(page->working);
    fillMissingAddresses(*page);
    PASSWORD_SetAdrCount(page->working.AdrCount);
    PASSWORD_SetAdrCompare(page->working.AdrCompare);

    page->widget = new QWidget(parent);
    page->widget->setObjectName("page1001");
    auto* layout = new QFormLayout(page->widget);
    addAddress(page, layout, page->count, page->countLabel, &PasswordSettings::AdrCount,
               &PasswordPage::countTyped, {"1001", "1006"}, "&Count Address");
    addAddress(page, layout, page->compare, page->compareLabel, &PasswordSettings::AdrCompare,
               &PasswordPage::compareTyped, {"1002", "1007"}, "Compare &Start Address");
    addPassword(page, layout);
    fillControls(*page);
    connectControls(page);
    SHEET_TrackPair([page] { return differs(*page, page->working); });
    SheetPage made;
    made.title = "&Password";
    made.widget = page->widget;
    made.isTouched = [page] { return isTouched(*page); };
    made.check = [page] { return check(*page); };
    made.apply = [page] { apply(*page); };
    made.activated = [page] {
        followDevice(*page);
        showAddresses(*page);
    };
    return made;
}
