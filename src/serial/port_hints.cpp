#include "serial/port_hints.h"

#include "notice/log.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/port_state.h"
#include "platform/serial_port.h"
#include "serial/sio.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int kFastMs = 2; // an adapter that hands over within that costs nothing to speak of

bool isDeviceFile(const std::string& device) {
    return device.find("://") == std::string::npos;
}

bool isThere(const std::string& device, const std::vector<std::string>& found) {
    return !isDeviceFile(device) || std::ranges::find(found, device) != found.end() ||
           (!device.starts_with("/dev/tty") && FILES_Exists(device));
}

// Those with a name first, then devices that have none.
std::string portsThatThereAre() {
    std::vector<std::string> found = PORTSTATE_Devices();
    std::string list;
    const auto add = [&list](const std::string& entry) {
        list += (list.empty() ? "" : ", ") + entry;
    };
    for (uint32_t port = 1; port <= kMaxComPort; ++port) {
        const std::string device = SIO_DeviceOfPort(port);
        if (isThere(device, found)) {
            add(formatText("COM%u (%s)", port, device.c_str()));
            std::erase(found, device);
        }
    }
    for (const std::string& device : found) {
        add(device);
    }
    return list.empty() ? "none" : list;
}

Hint heldBy(const std::string& device) {
    std::string holder = PORTSTATE_LockHolder(device);
    holder = holder.empty() ? PORTSTATE_Holders(device) : holder;
    return {Cause::portHeld, holder.empty() ? "a program that only its own user may see" : holder};
}

} // namespace

Hint PORTHINT_OfFailure(const std::string& device, const std::string& reason) {
    if (!isDeviceFile(device)) {
        return {};
    }
    if (reason == kPortInUse) {
        return heldBy(device);
    }
    if (reason.starts_with(kPortDenied)) {
        return {Cause::portDenied, device};
    }
    return {Cause::portMissing, portsThatThereAre()};
}

Hint PORTHINT_Shared(const std::string& device) {
    const std::string holders = isDeviceFile(device) ? PORTSTATE_Holders(device) : "";
    return holders.empty() ? Hint{} : Hint{Cause::portShared, holders};
}

void PORTHINT_NoteOpened(const std::string& device) {
    const auto note = [](const Hint& hint) { LOG_Add("Note: " + HINT_Text(hint)); };
    if (const Hint shared = PORTHINT_Shared(device); shared.cause != Cause::none) {
        note(shared);
    }
    const auto latency = isDeviceFile(device) ? PORTSTATE_Latency(device) : std::nullopt;
    if (latency && latency->ms > kFastMs) {
        note({Cause::slowAdapter, formatText("%d ms; `echo 1 | sudo tee %s` sets it to 1",
                                             latency->ms, latency->file.c_str())});
    }
}
