// The device view: the properties of the selected device.

#include "device/device_rows.h"
#include "ui/text_table.h"
#include "ui/view_widget.h"

#include <QVBoxLayout>
#include <array>
#include <memory>

namespace {

constexpr std::array<TextColumn, 2> kPropertyColumns = {{{"Name", 69, ""}, {"Value", 98, ""}}};

class DeviceView final : public ViewWidget {
public:
    explicit DeviceView(QWidget* parent)
        : ViewWidget(parent),
          table_(TEXTTABLE_Create(kPropertyColumns, "Device properties", font(), this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(table_);
        setFocusProxy(table_);
        DeviceView::refresh();
    }

    void refresh() override {
        const auto rows = std::make_shared<const std::vector<DeviceRow>>(DEVICEVIEW_MakeRows());
        TEXTTABLE_SetRows(table_, static_cast<int>(rows->size()), [rows](int row, int column) {
            const DeviceRow& texts = (*rows)[static_cast<size_t>(row)];
            return QString::fromStdString(column == 0 ? texts.name : texts.value);
        });
    }

    std::vector<int> columnWidths() const override { return TEXTTABLE_Widths(table_); }
    void setColumnWidths(const std::vector<int>& widths) override {
        TEXTTABLE_SetWidths(table_, widths);
    }

private:
    QTableView* table_;
};

} // namespace

ViewWidget* DEVICEVIEW_Create(QWidget* parent) {
    return new DeviceView(parent);
}
