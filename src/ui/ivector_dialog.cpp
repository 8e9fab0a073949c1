#include "ui/ivector_dialog.h"

#include "device/ivector_rows.h"
#include "notice/error.h"
#include "persist/ini.h"
#include "shell/session.h"
#include "ui/dialogs.h"
#include "ui/sheet.h"
#include "ui/text_table.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

namespace {

constexpr char kCaption[] = "Interupt Vectors";
constexpr char kSection[] = "Settings INTVECTS";
constexpr char kWidthsKey[] = "Header";
constexpr std::array<TextColumn, 5> kVectorColumns = {
    {{"#", 25, ""}, {"Name", 201, ""}, {"Bits", 37, ""}, {"Adr.", 55, ""}, {"Contents", 63, ""}}};
constexpr int kShownRows = 12; // about as many as the dialog shows at first

QString cellText(const IVectorRow& row, int column) {
    const std::array<const std::string*, kVectorColumns.size()> cells = {
        &row.number, &row.name, &row.bits, &row.address, &row.contents};
    return QString::fromStdString(*cells[static_cast<size_t>(column)]);
}

QTableView* addTable(QDialog& dialog, const std::vector<IVectorRow>& rows) {
    QTableView* table =
        TEXTTABLE_Create(kVectorColumns, "Interrupt vectors", dialog.font(), &dialog);
    table->setObjectName("vectors");
    TEXTTABLE_SetRows(table, static_cast<int>(rows.size()), [&rows](int row, int column) {
        return cellText(rows[static_cast<size_t>(row)], column);
    });
    std::array<int32_t, kVectorColumns.size()> widths{};
    INI_ReadIntArray(kSection, kWidthsKey, widths);
    TEXTTABLE_SetWidths(table, widths);
    const int rowHeight = table->verticalHeader()->defaultSectionSize();
    table->setMinimumSize(40 * table->fontMetrics().averageCharWidth(), 4 * rowHeight);
    return table;
}

// Wide enough for all columns, high enough for some rows.
void sizeDialog(QDialog& dialog, const QTableView* table) {
    const int frame = 2 * table->frameWidth() + 24;
    const int rowHeight = table->verticalHeader()->defaultSectionSize();
    const QSize hint = dialog.sizeHint();
    dialog.resize(std::max(hint.width(), table->horizontalHeader()->length() + frame + 20),
                  std::max(hint.height(), (kShownRows + 4) * rowHeight));
}

void storeWidths(const QTableView* table) {
    const std::vector<int> widths = TEXTTABLE_Widths(table);
    const std::vector<int32_t> stored(widths.begin(), widths.end());
    INI_WriteIntArray(kSection, kWidthsKey, stored);
}

void warnOfResetVectors(QDialog& dialog, const std::vector<IVectorRow>& rows) {
    for (const IVectorRow& row : rows) {
        if (row.resetOutsideFlash) {
            ERROR_Ask(static_cast<QWidget*>(&dialog),
                      "Reset vector does not point into flash memory!", "Reset Vector",
                      BOX_ICON_INFORMATION);
        }
    }
}

} // namespace

void IVECT_RestoreDefault() {
    INI_DeleteKey(kSection, kWidthsKey);
}

int DIALOG_InterruptVectors(QWidget* parent) {
    if (!SESSION_Get().loaded) {
        ERROR_Ask(parent, "No file loaded!", kCaption, BOX_ICON_INFORMATION);
        return kDialogCancel;
    }
    const std::vector<IVectorRow> rows = IVECT_MakeRows();
    QDialog dialog(parent);
    dialog.setObjectName("401");
    dialog.setWindowTitle(kCaption);
    QTableView* table = addTable(dialog, rows);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("1");
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(table, 1);
    layout->addWidget(buttons);
    sizeDialog(dialog, table);
    SHEET_CenterDialog(&dialog);
    dialog.setModal(true);
    dialog.show();
    warnOfResetVectors(dialog, rows);
    const int code = dialog.isVisible() ? dialog.exec() : dialog.result();
    storeWidths(table);
    return code == QDialog::Accepted ? kDialogOk : kDialogCancel;
}
