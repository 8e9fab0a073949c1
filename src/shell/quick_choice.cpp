#include "shell/quick_choice.h"

#include "device/device.h"
#include "device/devprops.h"
#include "device/devprops_store.h"
#include "link/target_link.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/port_list.h"
#include "serial/sio.h"
#include "shell/frame_rules.h"
#include "shell/recent_choices.h"
#include "shell/settings.h"
#include "shell/summary.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <set>

namespace {

bool isAddress(const std::string& device) {
    return device.find("://") != std::string::npos;
}

std::string describe(const std::string& name, const std::string& device) {
    const std::string adapter = isAddress(device) ? "" : PORTLIST_Adapter(PORTLIST_Find(device));
    return (name == device ? name : name + ": " + device) + (adapter.empty() ? "" : ", " + adapter);
}

bool isBefore(const std::string& left, const std::string& right) {
    return std::ranges::lexicographical_compare(left, right, [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) <
               std::tolower(static_cast<unsigned char>(b));
    });
}

const std::string& nameOfDevice(const std::string& device) {
    return device;
}

const std::string& nameOfPort(const PortChoice& port) {
    return port.name;
}

template <class Choice>
void putRecentFirst(std::vector<Choice>& choices, RecentChoice kind,
                    const std::string& (*nameOf)(const Choice&)) {
    auto end = choices.begin();
    for (const std::string& recent : RECENTCHOICES_Get(kind)) {
        const auto found = std::ranges::find(end, choices.end(), recent, nameOf);
        if (found != choices.end()) {
            std::rotate(end, found, found + 1);
            ++end;
        }
    }
}

// Another configuration takes effect as the options' does.
void changeTo(const std::function<void()>& change) {
    TARGET_Disconnect();
    change();
    SETTINGS_Save();
    CONFIGURATION_Changed();
}

} // namespace

std::vector<std::string> CHOICE_Devices() {
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(DEVICE_GetNumDevices()));
    for (int index = 0; index < DEVICE_GetNumDevices(); ++index) {
        names.push_back(DEVICE_GetNameAt(index));
    }
    std::ranges::sort(names, isBefore);
    putRecentFirst(names, RecentChoice::device, nameOfDevice);
    return names;
}

void CHOICE_TakeDevice(const std::string& name) {
    if (name != DEVICE_GetName() && FRAMERULES_IsFree()) {
        changeTo([&name] {
            DEVICE_FindByName(name);
            DEVPROPS_SelectAllBlocks();
        });
    }
}

bool CHOICE_ToggleBlock(int block) {
    const bool before = DEVPROPS_IsBlockSelected(block);
    if (!FRAMERULES_IsFree()) {
        return false;
    }
    DEVPROPS_SelectBlock(block, !before);
    if (DEVPROPS_IsBlockSelected(block) == before) {
        return false; // more blocks than can be selected
    }
    SETTINGS_Save();
    CONFIGURATION_Changed();
    return true;
}

std::vector<PortChoice> CHOICE_Ports() {
    std::vector<PortChoice> ports;
    std::set<std::string> named;
    const auto add = [&](const std::string& name, const std::string& device) {
        if (named.insert(device).second) {
            ports.push_back({name, describe(name, device)});
        }
    };
    for (uint32_t port = 1; port <= kMaxComPort; ++port) {
        const std::string device = SIO_DeviceOfPort(port);
        if (port == SIO_GetPort() || isAddress(device) || FILES_Exists(device)) {
            add(formatText("COM%u", port), device);
        }
    }
    for (const PresentPort& present : PORTLIST_Present()) {
        add(present.path, present.path);
    }
    if (!SIO_GetDevice().empty()) {
        add(SIO_GetDevice(), SIO_GetDevice());
    }
    putRecentFirst(ports, RecentChoice::port, nameOfPort);
    return ports;
}

void CHOICE_TakePort(const std::string& name) {
    if (name == SIO_PortName() || !FRAMERULES_IsFree()) {
        return;
    }
    SioConfig config = SIO_GetConfig();
    unsigned number = 0;
    const bool isNumber = std::sscanf(name.c_str(), "COM%u", &number) == 1;
    config.Port = isNumber ? number : 0;
    config.Device = isNumber ? "" : name;
    changeTo([&config] { SIO_SetConfig(config); });
}
