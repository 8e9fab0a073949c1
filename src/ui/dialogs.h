// The program's dialogs. Each runs to its end and returns 1 for OK or 2 for Cancel; what the user
// chose has been applied by then. The widgets' object names are the controls' numbers.
#pragma once

#include "shell/front_end.h"
#include "ui/modal.h"

#include <QWidget>

int DIALOG_Target(QWidget* parent);        // device, blocks, clock
int DIALOG_Settings(QWidget* parent);      // reset handling
int DIALOG_Communication(QWidget* parent); // port, rate, logging
int DIALOG_Password(QWidget* parent);
int DIALOG_Options(QWidget* parent); // the four pages in one sheet
int DIALOG_EditValue(QWidget* parent, ValueRequest& request);
int DIALOG_InterruptVectors(QWidget* parent);
void DIALOG_About(QWidget* parent);

// How the front end is asked for each.
inline void DIALOGS_Fill(FrontEnd& frontEnd) {
    frontEnd.targetDialog = [] { return MODAL_Run(DIALOG_Target); };
    frontEnd.settingsDialog = [] { return MODAL_Run(DIALOG_Settings); };
    frontEnd.communicationDialog = [] { return MODAL_Run(DIALOG_Communication); };
    frontEnd.passwordDialog = [] { return MODAL_Run(DIALOG_Password); };
    frontEnd.optionsSheet = [] { return MODAL_Run(DIALOG_Options); };
    frontEnd.editValue = [](ValueRequest& request) {
        return MODAL_Run([&request](QWidget* owner) { return DIALOG_EditValue(owner, request); });
    };
    frontEnd.interruptVectors = [] { MODAL_Run(DIALOG_InterruptVectors); };
    frontEnd.aboutDialog = [] {
        MODAL_Run([](QWidget* owner) {
            DIALOG_About(owner);
            return kDialogOk;
        });
    };
}
