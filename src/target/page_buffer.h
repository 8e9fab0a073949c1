// Gathers bytes into program frames of one page, or in word mode of up to one packet. Worker
// thread.
#pragma once

#include "link/failure.h"

#include <cstdint>
#include <span>

inline constexpr uint32_t kMaxPage = 1024; // bytes

// Whether the page and packet sizes in force can be written with. With `needsPages` word mode is
// not enough.
Result<> checkPageSizes(bool needsPages);

// Drops what an operation that failed or was cancelled has left in the buffer. Such an operation
// has reported itself, and its bytes must not reach the chip in the name of another one.
void dropPage();
// Takes bytes for chip addresses, sending what leaves the open window.
Result<> TARGET_WriteBytes(uint32_t address, std::span<const uint8_t> data);
// Sends the open window, if there is one.
Result<> TARGET_FlushPage();
