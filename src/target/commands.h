// The commands of the Target menu, run to their end: connect, operation, log lines, result box.
// User-interface thread; every wait processes events. Failures have been reported on return.
#pragma once

#include "data/image_copy.h"

#include <cstdint>
#include <optional>
#include <string>

// Whether there is a selected block to work on; reported when not. Commands on selected blocks
// begin with it.
bool TARGET_HasSelectedBlock();
void TARGET_DownloadRamImage(const std::string& path);
void TARGET_StartApplication();
int TARGET_EraseChip(bool showBox); // 0 done, 1 failed
void TARGET_EraseBlocks();
bool TARGET_EraseSelectedBlocks(); // without a box, as a step of Auto; whether it was done
void TARGET_Program(uint32_t first, uint32_t last); // addresses, last inclusive
void TARGET_ProgramTarget();
// End inclusive. Replaces the image by what was read; false, and the image stays, when that failed.
bool TARGET_ReadBack(uint32_t start, uint32_t end);
// What the chip holds in these ranges, which ascend and lie within the image; none when that
// failed.
std::optional<ImageCopy> TARGET_ReadToCompare(const std::vector<AddressRange>& ranges);
uint16_t TARGET_GetCrc(bool showBox);
uint16_t TARGET_GetSum(bool showBox);
void TARGET_Verify(uint32_t first, uint32_t last); // last inclusive
void TARGET_BlankCheckChip();
void TARGET_BlankCheckBlocks();
void TARGET_ProtectChip();
void TARGET_ProtectBlocks();
int TARGET_FlashStatus(); // 0 done
