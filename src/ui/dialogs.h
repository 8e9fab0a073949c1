// The program's dialogs. Each runs to its end and returns 1 for OK or 2 for Cancel; what the user
// chose has been applied by then. The widgets' object names are the controls' numbers.
#pragma once

#include "shell/front_end.h"

#include <QWidget>

int DIALOG_Target(QWidget* parent);        // device, blocks, clock
int DIALOG_Settings(QWidget* parent);      // reset handling
int DIALOG_Communication(QWidget* parent); // port, rate, logging
int DIALOG_Password(QWidget* parent);
int DIALOG_Options(QWidget* parent); // the four pages in one sheet
int DIALOG_EditValue(QWidget* parent, ValueRequest& request);
int DIALOG_InterruptVectors(QWidget* parent);
void DIALOG_About(QWidget* parent);
