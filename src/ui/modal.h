// Which boxes and dialogs block the frame at the moment. While one does, the frame handles nothing
// itself; when the program ends meanwhile they are rejected from here. User-interface thread.
#pragma once

#include <QWidget>
#include <functional>

// Marks a modal box or dialog while it is shown.
class ModalScope {
public:
    ModalScope();
    ~ModalScope();
    ModalScope(const ModalScope&) = delete;
    ModalScope& operator=(const ModalScope&) = delete;
    // The program is ending: nothing may be shown any more.
    bool isRefused() const;
    // The window that owns the dialog: `wanted`, else the frame while it can be seen.
    QWidget* owner(QWidget* wanted = nullptr) const;
};

// Runs a dialog of the program: the frame stands behind it, and it ends with the program. Its
// result, or kDialogCancel where nothing may be shown any more.
int MODAL_Run(const std::function<int(QWidget*)>& dialog);

bool MODAL_IsOpen();
// Rejects whatever modal is open.
void MODAL_EndAll();
// From here on nothing is shown; for a close request that waits for an open box.
void MODAL_RefuseFurther();
// That request has come to its turn and may ask.
void MODAL_AcceptAgain();
// The frame that owns the dialogs; `opening` is called before one appears, `left` when the last one
// has ended. Also forgets a refusal.
void MODAL_Init(QWidget* frame, std::function<void()> opening, std::function<void()> left);
