// The conversation that begins every boot-ROM operation: reset into the boot ROM, synchronisation,
// flash checksum, product information. User-interface thread.
#pragma once

#include "bootrom/family.h"

#include <cstdint>

// The whole of it. Reset and synchronisation are left out while the boot ROM still awaits a
// command.
Result<> _BootHandshake(const BootRomProtocol& family);
Result<> _ResetAndMatch(const BootRomProtocol& family);
// Sends the byte by which a boot ROM measures the rate until it is echoed.
Result<> familyMatchByte(uint8_t value);
Result<> _ProductInfo();

inline constexpr uint32_t kMatchMs = 30;
inline constexpr uint32_t kSumMs = 5000;

// The flash checksum that the boot ROM reported last.
uint32_t getBootSum();
void setBootSum(uint32_t sum);
// The flash was or may have been written since: what would tell a blank chip from it asks again.
// Any thread.
void forgetBootSum();
bool bootSumIsForgotten();
// Reads a checksum, high byte first, as the last reported one.
Result<> readBootSum(uint32_t timeoutMs);
// The progress's first line while a loader is sent, one that the user asked for or one in between.
void showDownload(bool isAskedFor);
// The result of awaiting the chip's answer to a loader, for which the description gives the time.
Result<> loaderAnswer(const Result<>& answered);
// Whether that is the checksum of an erased flash: of 0xFF from the first block's start to the last
// block's end.
bool _IsBlank();
