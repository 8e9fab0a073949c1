// What the boot ROM does to the flash by itself. User-interface thread, the link in LINK_BOOTROM.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

int _EraseChipTypeA();   // 1 erased
int _EraseChipTypeB();   // 1 erased
int _FlashStatusTypeA(); // 0 done, as the others
int _ReadProtectTypeA();
int _ProtectChipTypeB();

// Waits for the answer to an erase command, as long as the device may take; 0 when it has come
// whole, 1, without a message, when the time is over or the run was interrupted.
int _EraseWait(std::span<uint8_t> answer);
// Runs an erase, its handshake included, with its log lines and exit code: 1 erased. `erase`
// returns 0 when its exchange was completed, the outcome then being the boot result.
int _RunErase(const std::function<int()>& handshake, const std::function<int()>& erase);
