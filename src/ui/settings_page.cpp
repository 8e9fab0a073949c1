// The settings page: whether the user is asked to reset the target.

#include "ui/pages.h"

#include <QCheckBox>
#include <QVBoxLayout>

SheetPage SETTINGSPAGE_Create(QWidget* parent, const SharedProps& working) {
    auto* widget = new QWidget(parent);
    widget->setObjectName("page651");
    auto* layout = new QVBoxLayout(widget);
    auto* box = new QCheckBox("&User should not be asked to press reset", widget);
    box->setObjectName("602");
    box->setChecked(working->ResetByPC != 0);
    layout->addWidget(box);
    layout->addStretch();
    QObject::connect(box, &QCheckBox::clicked, widget, [working](bool checked) {
        working->ResetByPC = checked ? 1 : 0;
        SHEET_NotifyChange();
    });
    SheetPage page;
    page.title = "&Settings";
    page.widget = widget;
    page.apply = [working] { DEVPROPS_Set(*working); }; // in the sheet for the second time
    return page;
}
