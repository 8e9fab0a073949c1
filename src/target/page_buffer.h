// Gathers bytes into program frames of one page, or in word mode of up to one packet. Worker
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

inline constexpr uint32_t kMaxPage = 1024; // bytes

// Why the page and packet sizes in force cannot be written with; empty when they can. With
// `needsPages` word mode is not enough.
std::string _CheckPageSizes(bool needsPages);

// Drops what an operation that failed or was cancelled has left in the buffer. Such an operation
// has reported itself, and its bytes must not reach the chip in the name of another one.
void _DropPage();
// Takes bytes for chip addresses, sending what leaves the open window. The bytes taken; fewer than
// given after an error.
size_t TARGET_WriteBytes(uint32_t address, std::span<const uint8_t> data);
// Sends the open window: 1 sent and answered, 0 nothing open or an error.
int TARGET_FlushPage();
