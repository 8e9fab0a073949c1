#include "ui/modal.h"

#include "shell/front_end.h"
#include "shell/session.h"

#include <QApplication>
#include <QDialog>

namespace {

QWidget* modalFrame = nullptr;
std::function<void()> whenOpening;
std::function<void()> whenLeft;
int depth = 0;
bool refused = false;

} // namespace

ModalScope::ModalScope() {
    if (whenOpening && !isRefused()) {
        whenOpening();
    }
    ++depth;
}

ModalScope::~ModalScope() {
    --depth;
    if (depth == 0 && whenLeft) {
        whenLeft();
    }
}

bool ModalScope::isRefused() const {
    return refused || SESSION_Get().quit;
}

QWidget* ModalScope::owner(QWidget* wanted) const {
    if (wanted != nullptr) {
        return wanted;
    }
    if (QWidget* modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return modalFrame != nullptr && modalFrame->isVisible() ? modalFrame : nullptr;
}

int MODAL_Run(const std::function<int(QWidget*)>& dialog) {
    const ModalScope modal;
    return modal.isRefused() ? kDialogCancel : dialog(modal.owner());
}

bool MODAL_IsOpen() {
    return depth > 0;
}

void MODAL_EndAll() {
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
    while (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        dialog->QDialog::reject(); // also where a dialog would ask first
        if (QApplication::activeModalWidget() == dialog) {
            return;
        }
    }
}

void MODAL_RefuseFurther() {
    refused = true;
}

void MODAL_AcceptAgain() {
    refused = false;
}

void MODAL_Init(QWidget* newFrame, std::function<void()> opening, std::function<void()> left) {
    modalFrame = newFrame;
    whenOpening = std::move(opening);
    whenLeft = std::move(left);
    refused = false;
}
