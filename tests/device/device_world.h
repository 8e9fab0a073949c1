// A program folder with device descriptions in it and a record of everything that is reported.
#pragma once

#include "device/device.h"
#include "device/device_parser.h"
#include "device/devprops.h"
#include "notice/error.h"
#include "notice/log.h"
#include "platform/files.h"
#include "support/temp_folder.h"

#include <string>
#include <vector>

inline const std::string kHead = "Device = \"VT-1\"\nManufacturer = \"Acme\"\nBank = 0, 100\n";

class DeviceWorld {
public:
    DeviceWorld() {
        FILES_SetProgramPath(folder / "tool");
        ERROR_SetHandlers(
            [this](WindowHandle, const std::string& text, int) { reports.push_back(text); },
            [this](WindowHandle, const std::string& text, const std::string& caption, unsigned) {
                reports.push_back(caption + ": " + text);
                return 0;
            },
            {});
        LOG_SetObserver([this](const std::string&, const std::string& text) { log += text; });
        DEVICE_Clear();
        DEVPROPS_Set({});
    }
    ~DeviceWorld() {
        ERROR_Exit();
        LOG_SetObserver({});
        DEVICE_Clear();
        DEVPROPS_Set({});
        FILES_SetProgramPath({});
    }
    DeviceWorld(const DeviceWorld&) = delete;
    DeviceWorld& operator=(const DeviceWorld&) = delete;

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
    std::vector<std::string> reports; // questions as "CAPTION: TEXT"
    std::string log;
};
