// The checksum of the image over the blocks of the selected device, as the chip computes it.
#pragma once

#include <cstdint>

// The checksum, CRC or 16-bit sum, that the selected blocks have when they hold the image and 0xFF
// around it; that of no bytes when none is selected. HEXDATA_GetChecksum gives it from then on.
uint16_t DEVICE_CalcImageChecksum(bool crc);
