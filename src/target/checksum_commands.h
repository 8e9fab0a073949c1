// Get CRC and Get SUM, for those who need to know whether there is a value.
#pragma once

#include <cstdint>
#include <optional>

// The CRC or SUM of the selected blocks on the chip; nothing when it could not be had, which has
// been reported. User-interface thread.
std::optional<uint16_t> getTargetChecksum(bool crc, bool showBox);
