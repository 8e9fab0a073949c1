// Whether the image may be written to the chip as the user has set it up.
#pragma once

#include "device/device.h"

#include <vector>

// What the blocks cover, in ascending order, neighbours joined. Any thread.
std::vector<AddressRange> DEVICE_JoinedRanges(const std::vector<DeviceBlock>& blocks);

// Whether every byte of the image lies in a selected block of the selected device. An empty image
// fits. User-interface thread.
bool DEVICE_ImageFits();
