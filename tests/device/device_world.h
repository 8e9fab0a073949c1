// A program folder with device descriptions in it and a record of everything that is reported.
#pragma once

#include "device/device.h"
#include "device/device_parser.h"
#include "device/devprops.h"
#include "notice/log.h"
#include "platform/files.h"
#include "support/fresh_process.h"
#include "support/reports.h"
#include "support/temp_folder.h"

#include <string>
#include <vector>

inline const std::string kHead = "Device = \"VT-1\"\nManufacturer = \"Acme\"\nBank = 0, 100\n";

class DeviceWorld {
    FreshStart freshStart_;

public:
    DeviceWorld() {
        FILES_SetProgramPath(folder / "tool");
        LOG_SetObserver([this](const std::string&, const std::string& text) { log += text; });
    }
    ~DeviceWorld() { freshProcess(); }

    std::string deviceFolder() const { return (folder / "Device").string() + "/"; }
    void addFile(const std::string& name, const std::string& text) const {
        std::filesystem::create_directory(folder / "Device");
        writeFile(deviceFolder() + name, text);
    }
    // Adds a device to the table without a file, and makes it the selected one.
    static void select(const std::string& text) {
        _AddDevice(DEVICE_ParseText(text).record.value());
        DEVPROPS_SetDevice(DEVICE_GetNumDevices() - 1);
    }

    const TempFolder folder;
    Reports screen;
    std::vector<std::string>& reports = screen.errors;
    std::string log;
};
