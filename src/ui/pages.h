// The four pages of settings. Each is shown in the Options sheet and in a dialog of its own, and
// changes nothing outside its working copy before it is applied.
#pragma once

#include "device/devprops.h"
#include "link/password.h"
#include "ui/sheet.h"

#include <memory>

// The device properties that the target and the settings page edit together, with a device of the
// table.
using SharedProps = std::shared_ptr<DevProps>;
SharedProps PAGES_WorkingProps();

SheetPage TARGETPAGE_Create(QWidget* parent, SharedProps working);
SheetPage SETTINGSPAGE_Create(QWidget* parent, const SharedProps& working);
SheetPage COMMPAGE_Create(QWidget* parent);
// `limits` gives those of the device that is chosen at the moment.
SheetPage PASSWORDPAGE_Create(QWidget* parent, std::function<PasswordLimits()> limits);
