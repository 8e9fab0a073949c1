// What stands behind a COM number, for people who have to know which plug it is.
#pragma once

#include <cstdint>
#include <string>

// "/dev/ttyUSB0 (present: FTDI FT232R USB UART, A50285BI)"
std::string PORTTEXT_DeviceOf(uint32_t port);
// "present", of a device that is named itself.
std::string PORTTEXT_State(const std::string& device);
