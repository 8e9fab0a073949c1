// What stands behind a COM number, for people who have to know which plug it is.
#pragma once

#include <cstdint>
#include <string>

// "/dev/ttyUSB0 (present)"
std::string PORTTEXT_DeviceOf(uint32_t port);
