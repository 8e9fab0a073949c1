// Stand-ins until the views and dialogs are merged.
#include "ui/dialogs.h"
#include "ui/view_widget.h"
#define WEAK __attribute__((weak))
namespace {
class Blank : public ViewWidget {
public:
    using ViewWidget::ViewWidget;
    void refresh() override {}
    std::vector<int> columnWidths() const override { return widths_; }
    void setColumnWidths(const std::vector<int>& widths) override { widths_ = widths; }
    std::vector<int> widths_;
};
} // namespace
WEAK ViewWidget* HEXLISTVIEW_Create(QWidget* p) {
    return new Blank(p);
}
WEAK ViewWidget* HEXDUMPVIEW_Create(QWidget* p) {
    return new Blank(p);
}
WEAK ViewWidget* DEVICEVIEW_Create(QWidget* p) {
    return new Blank(p);
}
WEAK int DIALOG_Target(QWidget*) {
    return 2;
}
WEAK int DIALOG_Settings(QWidget*) {
    return 2;
}
WEAK int DIALOG_Communication(QWidget*) {
    return 2;
}
WEAK int DIALOG_Password(QWidget*) {
    return 2;
}
WEAK int DIALOG_Options(QWidget*) {
    return 2;
}
WEAK int DIALOG_EditValue(QWidget*, ValueRequest&) {
    return 2;
}
WEAK int DIALOG_InterruptVectors(QWidget*) {
    return 2;
}
