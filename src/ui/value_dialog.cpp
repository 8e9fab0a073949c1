// The value dialog: one or two hexadecimal numbers, and perhaps bytes, under a hint.

#include "notice/error.h"
#include "persist/hex_text.h"
#include "platform/format.h"
#include "ui/dialogs.h"
#include "ui/sheet.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

namespace {

constexpr int kHexMode = 1;
constexpr int kMaxText = 200;        // characters of a field
constexpr int kMaxBytesText = 32767; // of that of bytes

std::string textOf(std::optional<int32_t> value, bool negative) {
    if (!value) {
        return "";
    }
    const auto bits = static_cast<uint32_t>(*value);
    return negative ? formatText("-%X", 0u - bits) : formatText("%X", bits);
}

void forceUpperCase(QLineEdit* field) {
    const int cursor = field->cursorPosition();
    const QSignalBlocker quiet(field);
    field->setText(field->text().toUpper());
    field->setCursorPosition(cursor);
}

QLineEdit* addField(QFormLayout* layout, const std::string& labelText, const char* labelName,
                    const char* fieldName) {
    QWidget* dialog = layout->parentWidget();
    auto* field = new QLineEdit(dialog);
    field->setObjectName(fieldName);
    field->setMaxLength(kMaxText);
    QObject::connect(field, &QLineEdit::textChanged, field, [field] { forceUpperCase(field); });
    auto* label = new QLabel(QString::fromStdString(labelText), dialog);
    label->setObjectName(labelName);
    label->setBuddy(field);
    layout->addRow(label, field);
    return field;
}

// The number in a field; none when it is empty or, which is reported, no number.
std::optional<int32_t> readField(QWidget* dialog, const QLineEdit* field) {
    if (field->text().isEmpty()) {
        return std::nullopt;
    }
    std::string error;
    const int32_t value = HEXTEXT_ToValue(field->text().toStdString(), error);
    if (!error.empty()) {
        ERROR_Out(dialog, error, 1);
        return std::nullopt;
    }
    return value;
}

// The second field is null where one value is asked for.
struct Fields {
    QLineEdit* first = nullptr;
    QLineEdit* second = nullptr;
    QLineEdit* bytes = nullptr; // null where none are asked for
};

Fields addFields(QFormLayout* layout, const ValueRequest& request) {
    auto* hint = new QLabel(QString::fromStdString(request.hint), layout->parentWidget());
    hint->setObjectName("701");
    hint->setVisible(!request.hint.empty());
    layout->addRow(hint);
    Fields fields;
    fields.first = addField(layout, request.label0, "702", "704");
    if (!request.label1.empty()) {
        fields.second = addField(layout, request.label1, "703", "705");
    }
    if (!request.bytesLabel.empty()) {
        fields.bytes = addField(layout, request.bytesLabel, "706", "707");
        fields.bytes->setMaxLength(kMaxBytesText);
        fields.bytes->setText(QString::fromStdString(request.bytes));
    }
    return fields;
}

void showValues(QWidget* dialog, const Fields& fields, const ValueRequest& request) {
    if (request.mode != kHexMode) {
        ERROR_Out(dialog, "EditValue::_OnInitDialog: Mode not supported", 1);
        return;
    }
    fields.first->setText(QString::fromStdString(textOf(request.value0, request.sign < 0)));
    fields.first->selectAll();
    if (fields.second != nullptr) {
        fields.second->setText(QString::fromStdString(textOf(request.value1, false)));
    }
}

void readValues(QWidget* dialog, const Fields& fields, ValueRequest& request) {
    if (request.mode != kHexMode) {
        return;
    }
    request.value0 = readField(dialog, fields.first);
    if (fields.second != nullptr) {
        request.value1 = readField(dialog, fields.second);
    }
    if (fields.bytes != nullptr) {
        request.bytes = fields.bytes->text().toStdString();
    }
}

} // namespace

int DIALOG_EditValue(QWidget* parent, ValueRequest& request) {
    QDialog dialog(parent);
    dialog.setObjectName("700");
    dialog.setWindowTitle(QString::fromStdString(request.title));
    auto* layout = new QFormLayout(&dialog);
    const Fields fields = addFields(layout, request);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("1");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("2");
    layout->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        readValues(&dialog, fields, request);
        dialog.accept();
    });
    showValues(parent, fields, request);
    SHEET_CenterDialog(&dialog);
    return dialog.exec() == QDialog::Accepted ? kDialogOk : kDialogCancel;
}
