// What the loaded data says about an interrupt vector of the selected device.
#pragma once

#include "device/device_record.h"

#include <cstdint>
#include <optional>

// The little-endian value, cut to the vector's bits; none unless the data holds all of its bytes.
std::optional<uint32_t> IVECT_LoadedValue(const IVectorEntry& vector);
// Whether all bits of the value are ones, as in erased flash.
bool IVECT_IsErased(const IVectorEntry& vector, uint32_t value);
// A vector is the reset vector when its name begins with "reset", in whatever case.
bool IVECT_IsReset(const IVectorEntry& vector);
// Whether the value lies between the start of the first and the end of the last block.
bool IVECT_PointsIntoFlash(uint32_t value);
