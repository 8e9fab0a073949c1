// What the boot ROM does to the flash by itself. User-interface thread, the link in LINK_BOOTROM.
#pragma once

#include "link/failure.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

Result<> _EraseChipTypeA();
Result<> _EraseChipTypeB();
Result<> _FlashStatusTypeA();
Result<> _ReadProtectTypeA();
Result<> _ProtectChipTypeB();

// Waits for the answer to an erase command, as long as the device may take; a failure without a
// reason when the time is over or the run was interrupted.
Result<> _EraseWait(std::span<uint8_t> answer);
// Runs an erase, its handshake included, with its log lines and exit code.
Result<> _RunErase(const std::function<Result<>()>& handshake,
                   const std::function<Result<>()>& erase);
