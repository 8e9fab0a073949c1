#include "ui/port_text.h"

#include "platform/files.h"
#include "platform/port_list.h"
#include "serial/sio.h"

std::string PORTTEXT_DeviceOf(uint32_t port) {
    const std::string device = SIO_DeviceOfPort(port);
    return device + " (" + PORTTEXT_State(device) + ")";
}

std::string PORTTEXT_State(const std::string& device) {
    if (device.find("://") != std::string::npos) {
        return "a port server on the network";
    }
    if (!FILES_Exists(device)) {
        return "not present";
    }
    const std::string adapter = PORTLIST_Adapter(PORTLIST_Find(device));
    return adapter.empty() ? "present" : "present: " + adapter;
}
