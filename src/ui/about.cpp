#include "platform/format.h"
#include "shell/identity.h"
#include "ui/artwork.h"
#include "ui/dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr char kNotice[] =
    "Programs the flash of single-chip microcontrollers through their serial "
    "boot ROM.\nFree software under the MIT licence, without any warranty.";
constexpr int kPicture = 96; // pixels

QLabel* createText(int id, const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::number(id));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

void DIALOG_About(QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName("400");
    dialog.setWindowTitle(QString::fromStdString(formatText("About %s", kProductName)));
    auto* picture = new QLabel(&dialog);
    picture->setObjectName("111");
    picture->setPixmap(
        ART_Icon(Art::program).pixmap(QSize(kPicture, kPicture), dialog.devicePixelRatioF()));
    QLabel* name = createText(320, kProductName, &dialog);
    QFont font = name->font();
    font.setPointSizeF(font.pointSizeF() * 1.6);
    font.setBold(true);
    name->setFont(font);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("1");
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);

    const QString version =
        QString::fromStdString(formatText("Version: %s", IDENTITY_Version().c_str()));
    auto* layout = new QGridLayout(&dialog);
    layout->setHorizontalSpacing(16);
    layout->addWidget(picture, 0, 0, 4, 1, Qt::AlignTop);
    layout->addWidget(name, 0, 1);
    layout->addWidget(createText(323, version, &dialog), 1, 1);
    layout->addWidget(createText(322, kCompileTime, &dialog), 2, 1);
    layout->addWidget(createText(321, kNotice, &dialog), 3, 1);
    layout->addWidget(buttons, 4, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    dialog.exec();
}
