// The four pages of settings. Each is shown in the Options sheet and in a dialog of its own.
#pragma once

#include "device/devprops.h"
#include "ui/sheet.h"

#include <memory>

// The device properties that the target and the settings page edit together.
using SharedProps = std::shared_ptr<DevProps>;

SheetPage TARGETPAGE_Create(QWidget* parent, SharedProps working);
SheetPage SETTINGSPAGE_Create(QWidget* parent, const SharedProps& working);
SheetPage COMMPAGE_Create(QWidget* parent);
SheetPage PASSWORDPAGE_Create(QWidget* parent);
