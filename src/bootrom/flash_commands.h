// What the boot ROM does to the flash by itself, as far as the families have it in common.
// User-interface thread, the link in LINK_BOOTROM.
#pragma once

#include "bootrom/family.h"

#include <cstdint>
#include <span>

// Erases the chip, handshake included, with log lines and exit code.
Result<> _EraseChip(const BootRomProtocol& family);
// Waits for the answer to an erase command, as long as the device may take; a failure without a
// reason when the time is over or the run was interrupted.
Result<> _EraseWait(std::span<uint8_t> answer);
