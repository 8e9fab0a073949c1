#include "ui/port_text.h"

#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"

std::string PORTTEXT_DeviceOf(uint32_t port) {
    const std::string device = SIO_DeviceOfPort(port);
    const bool remote = device.find("://") != std::string::npos;
    const char* state = remote                 ? "a port server on the network"
                        : FILES_Exists(device) ? "present"
                                               : "not present";
    return formatText("%s (%s)", device.c_str(), state);
}
